#include "virtualcharger/scenario/junit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>

namespace {

unsigned char Byte(std::string_view text, std::size_t place) {
  return place < text.size() ? static_cast<unsigned char>(text[place]) : 0;
}

// How many bytes the character at the text's begin has; 0 where it is none that XML allows.
std::size_t CharacterSize(std::string_view text) {
  const unsigned first = Byte(text, 0);
  if (first < 0x80) {
    return (first >= ' ' && first != 0x7F) || first == '\n' || first == '\t' ? 1 : 0;
  }
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  constexpr unsigned kLeast[]{0x80, 0x800, 0x10000};
  unsigned code = first & (0xFFU >> (size + 1));
  for (std::size_t place = 1; place < size; ++place) {
    if ((Byte(text, place) & 0xC0U) != 0x80) return 0;
    code = code << 6U | (Byte(text, place) & 0x3FU);
  }
  const bool allowed = first >= 0xC0 && code >= kLeast[size - 2] && code <= 0x10FFFF &&
                       (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
  return allowed ? size : 0;
}

std::string Replacement(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

std::string Element(std::string_view name, const STestCase& test) {
  const auto message = test.text.substr(0, test.text.find('\n'));
  return fmt::format("      <{0} message=\"{1}\">{2}</{0}>\n", name, XmlText(message),
                     XmlText(test.text));
}

std::string CaseXml(const std::string& file, const STestCase& test) {
  auto xml = fmt::format(
      "    <testcase classname=\"{}\" name=\"{}\" file=\"{}\" line=\"{}\" "
      "time=\"{:.3f}\">\n",
      XmlText(std::filesystem::path(file).stem().string()), XmlText(test.name), XmlText(file),
      test.line, test.seconds);
  if (test.verdict == EVerdict::Failed) xml += Element("failure", test);
  if (test.verdict == EVerdict::Broken) xml += Element("error", test);
  if (test.verdict == EVerdict::Skipped) xml += Element("skipped", test);
  if (!test.output.empty()) {
    xml += fmt::format("      <system-out>{}</system-out>\n", XmlText(test.output));
  }
  return xml + "    </testcase>\n";
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string xml;
  while (!text.empty()) {
    auto size = CharacterSize(text);
    const auto replacement = Replacement(text.front());
    if (!replacement.empty()) {
      xml += replacement;
      size = 1;
    } else if (size == 0) {
      xml += fmt::format("\\x{:02x}", Byte(text, 0));
      size = 1;
    } else {
      xml += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  return xml;
}

std::string SuiteXml(const STestSuite& suite) {
  const auto count = [&](EVerdict verdict) {
    return std::ranges::count(suite.cases, verdict, &STestCase::verdict);
  };
  double seconds = 0;
  std::string cases;
  for (const auto& test : suite.cases) {
    seconds += test.seconds;
    cases += CaseXml(suite.file, test);
  }
  return fmt::format(
      "  <testsuite name=\"{}\" file=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"{}\" "
      "skipped=\"{}\" time=\"{:.3f}\">\n{}  </testsuite>\n",
      XmlText(std::filesystem::path(suite.file).stem().string()), XmlText(suite.file),
      suite.cases.size(), count(EVerdict::Failed), count(EVerdict::Broken),
      count(EVerdict::Skipped), seconds, cases);
}

std::string JUnitXml(const std::string& suites) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n" + suites + "</testsuites>\n";
}
