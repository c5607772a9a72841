// What CI reads of a run: a test suite for each scenario, a test case for each of its sections.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class EVerdict {
  Passed,
  Failed,   // something was not as expected
  Broken,   // it could not be told
  Skipped,  // not reached, or not possible on this machine
};

struct STestCase {
  std::string name;
  int line = 0;  // of the file, from 1; 0: none
  double seconds = 0;
  EVerdict verdict = EVerdict::Passed;
  std::string text{};    // why it is not passed
  std::string output{};  // what else helps to understand that
};

struct STestSuite {
  std::string file;
  std::vector<STestCase> cases;
};

// Fit for XML's text and attribute values. What XML has no place for, control characters and bytes
// that are no UTF-8, is written as in "\x1b".
std::string XmlText(std::string_view text);

// The element of one suite.
std::string SuiteXml(const STestSuite& suite);

// The file, of the suites' elements.
std::string JUnitXml(const std::string& suites);
