// The files of the page, which are part of the program.
#pragma once

#include <span>
#include <string_view>

struct SPageFile {
  std::string_view name;  // in the folder assets
  std::string_view content;
};

// All of them; the build writes the definition.
extern const std::span<const SPageFile> kPageFiles;

// By a request's target: "/page.css", and "/" for index.html. Nothing if there is none.
const SPageFile* FindPageFile(std::string_view target);

// For the field Content-Type.
std::string_view ContentType(const SPageFile& file);
