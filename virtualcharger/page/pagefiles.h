// The files of the page, which are part of the program.
#pragma once

#include <span>
#include <string>
#include <string_view>

struct SPageFile {
  std::string_view name;  // in the folder assets
  std::string_view content;
};

// All of them; the build writes the definition.
extern const std::span<const SPageFile> kPageFiles;

// By a request's target: "/page.css", "/" for index.html, and "/lamp" for lamp.html. Nothing if
// there is none.
const SPageFile* FindPageFile(std::string_view target);

// For the field Content-Type.
std::string_view ContentType(const SPageFile& file);

// For the field Content-Security-Policy, of a file or of what is none. Only the lamp alone, which
// has no controls that a click could be led to, stands in frames, and only in those of pages of
// this machine. The page itself frames the lamps of other chargers and nothing else.
std::string ContentPolicy(const SPageFile* file);
