// The store as a file: read whole, or not at all.
#pragma once

#include <json/json.h>

#include <memory>
#include <string>

namespace KvConfig {

struct StoreContent {
  std::string text;                         // the file's bytes; empty when they could not be read
  std::string error;                        // why it is no store, with its path; empty when it is
  std::shared_ptr<const Json::Value> root;  // an object; empty when it is no store
};

// Reads the file strictly: one JSON object of limited size and depth, no key twice, no comment, no
// control character but white space, nothing before or after it. Never throws for what it finds.
StoreContent ReadStore(const std::string& path);

// The section's object; an empty one when it is missing or something else.
const Json::Value& SectionOf(const Json::Value& root, const std::string& section);

// One line about a value that does not fit. The key may be empty: then it is about the section.
std::string DescribeMismatch(const std::string& path, const std::string& section,
                             const std::string& key, const Json::Value& found,
                             const std::string& expected);

// As KvConfig::Write, for the store at this path. Writers of one directory wait for each other.
void WriteStore(const std::string& path, const std::string& section, const std::string& key,
                const Json::Value& value);

namespace Detail {

// Throws std::runtime_error that says what is wrong.
Json::Value ParseStore(const std::string& text);

std::string ErrnoText();

}  // namespace Detail
}  // namespace KvConfig
