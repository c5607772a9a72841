// The text that begins each log line of an object of which there can be several.
#pragma once

#include <string>
#include <utility>

class CPrefix {
 public:
  explicit CPrefix(std::string text = {}) : mText(std::move(text)) {}
  virtual ~CPrefix() = default;

  const std::string& Text() const { return mText; }

 private:
  const std::string mText;
};

class CConnectorPrefix : public CPrefix {
 public:
  explicit CConnectorPrefix(int connectorNumber)
      : CPrefix("[Connector " + std::to_string(connectorNumber) + "] ") {}
};
