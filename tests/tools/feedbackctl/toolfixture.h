// The tool on a root directory of the test's own.
#pragma once

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/platform/rpc/hosts.h"
#include "tests/support/temporarydirectory.h"
#include "tools/feedbackctl/commandline.h"

class ToolFixture : public testing::Test {
 protected:
  struct Outcome {
    int status;
    std::string out;
    std::string err;
  };

  // With --root behind the words, so that it wins over any other.
  Outcome Run(std::vector<std::string> words) const {
    std::ostringstream out;
    std::ostringstream err;
    words.insert(words.end(), {"--root", mRoot.Path().string()});
    const int status = RunTool(words, {out, err, [](auto) { return true; }});
    return {status, out.str(), err.str()};
  }

  void WriteStore(const std::string& text) const { mRoot.WriteFile("etc/ovra.json", text); }

  std::string Store() const { return mRoot.ReadFile("etc/ovra.json"); }

  const SocketDirectory mSockets;
  const TemporaryDirectory mRoot;
};
