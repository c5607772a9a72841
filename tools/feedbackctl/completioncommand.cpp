#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/words.h"

namespace {

// What a value's or an argument's name says about what may stand there.
std::string PlainName(std::string_view name) {
  return std::string(name.substr(name.find_first_not_of('['),
                                 name.find_last_not_of(']') + 1 - name.find_first_not_of('[')));
}

// The virtual chargers that run when the completion is asked for.
constexpr auto kChargers = "$(feedbackctl chargers 2>/dev/null | cut -d\" \" -f1)";

bool IsPath(std::string_view name) {
  return name == "PATH" || name == "FILE";
}

// A branch of bash's case that offers what may stand under the name.
std::string BashBranch(const std::string& pattern, std::string_view name) {
  const auto words = KnownWords(name);
  if (!words.empty()) {
    return fmt::format("    {}) words=\"{}\" ;;\n", pattern, fmt::join(words, " "));
  }
  if (name == "NAME") return fmt::format("    {}) words={} ;;\n", pattern, kChargers);
  return IsPath(name) ? fmt::format("    {}) files=yes ;;\n", pattern) : "";
}

// By "option:--root" and "argument:trigger:0"; a word that begins with two dashes is an option.
std::string BashBranches() {
  std::string text;
  for (const auto& option : Options()) {
    if (!option.value.empty()) {
      auto branch = BashBranch(fmt::format("option:{}", option.name), option.value);
      text += branch.empty() ? fmt::format("    option:{}) ;;\n", option.name) : branch;
    }
  }
  std::vector<std::string_view> names;
  for (const auto& command : Commands()) {
    names.push_back(command.name);
    text += fmt::format("    options:{}) words=\"{}\" ;;\n", command.name,
                        fmt::join(OptionsOf(command), " "));
    const auto arguments = ArgumentsOf(command);
    for (std::size_t place = 0; place < arguments.size(); ++place) {
      text += BashBranch(fmt::format("argument:{}:{}", command.name, place),
                         PlainName(arguments[place]));
    }
  }
  text += fmt::format("    options:) words=\"{}\" ;;\n", fmt::join(OptionsOf({}), " "));
  return text + fmt::format("    argument::0) words=\"{}\" ;;\n", fmt::join(names, " "));
}

std::string BashScript() {
  std::vector<std::string_view> withValue;
  for (const auto& option : Options()) {
    if (!option.value.empty()) {
      withValue.push_back(option.name);
    }
  }
  return fmt::format(R"(# bash completion of feedbackctl, made by "feedbackctl completion bash"
_feedbackctl() {{
  local word current=${{COMP_WORDS[COMP_CWORD]}} previous= command= words= files= place=0 what
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case $previous in {0}) previous=; continue ;; esac
    previous=$word
    case $word in
      -*) ;;
      *) if [[ -z $command ]]; then command=$word; else place=$((place + 1)); fi ;;
    esac
  done
  case $previous in
    {0}) what=option:$previous ;;
    *) if [[ $current == -* ]]; then what=options:$command; else what=argument:$command:$place; fi ;;
  esac
  case $what in
{1}  esac
  if [[ -n $files ]]; then
    COMPREPLY=($(compgen -f -- "$current"))
    compopt -o filenames 2>/dev/null
  else
    COMPREPLY=($(compgen -W "$words" -- "$current"))
  fi
}}
complete -F _feedbackctl feedbackctl
)",
                     fmt::join(withValue, "|"), BashBranches());
}

// What zsh's _arguments offers under the name.
std::string ZshAction(std::string_view name) {
  const auto words = KnownWords(name);
  if (!words.empty()) {
    return fmt::format("{}:({})", name, fmt::join(words, " "));
  }
  if (name == "NAME") return fmt::format("{}:{{compadd {}}}", name, kChargers);
  return fmt::format("{}:{}", name, IsPath(name) ? "_files" : " ");
}

// In a text between single quotes and brackets.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '\'') {
      escaped += "'\\''";
    } else if (letter == '[' || letter == ']' || letter == ':') {
      escaped += std::string("\\") + letter;
    } else {
      escaped += letter;
    }
  }
  return escaped;
}

std::string ZshOptions(const std::vector<std::string_view>& names) {
  std::string text;
  for (const auto& option : Options()) {
    if (std::ranges::find(names, option.name) != names.end()) {
      text += fmt::format(" \\\n        '{}[{}]{}'", option.name, ZshText(option.meaning),
                          option.value.empty() ? "" : ":" + ZshAction(option.value));
    }
  }
  return text;
}

std::string ZshScript() {
  std::string names;
  std::string branches;
  for (const auto& command : Commands()) {
    names += fmt::format("    '{}:{}'\n", command.name, ZshText(command.summary));
    branches += fmt::format("      {}) _arguments{}", command.name, ZshOptions(OptionsOf(command)));
    const auto arguments = ArgumentsOf(command);
    for (std::size_t place = 0; place < arguments.size(); ++place) {
      branches +=
          fmt::format(" \\\n        '{}:{}'", place + 1, ZshAction(PlainName(arguments[place])));
    }
    branches += " ;;\n";
  }
  return fmt::format(R"(# zsh completion of feedbackctl, made by "feedbackctl completion zsh"
_feedbackctl() {{
  local curcontext=$curcontext state line
  local -a commands=(
{0}  )
  _arguments -C{2} \
        '1:command:->command' '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument) case $words[1] in
{1}    esac ;;
  esac
}}
compdef _feedbackctl feedbackctl
)",
                     names, branches, ZshOptions(OptionsOf({})));
}

}  // namespace

int RunCompletion(const CInvocation& invocation, const CTool& tool) {
  tool.out << (Choice(invocation.arguments[0], "a shell", "SHELL") == 0 ? BashScript()
                                                                        : ZshScript());
  return kDone;
}
