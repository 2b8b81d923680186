// The message of the sign-in window, read.

#pragma once

#include <string>

namespace launcher {

enum Code { kSignedIn = 0, kWindowClosed = 1, kLoadFailed = 2, kNoAnswer = 3, kOptionsMissing = 255 };

struct Answer {
  int code = kNoAnswer;
  std::string address;  // where the sign-in ended, its result in the query; only with kSignedIn
};

// Whether the message has its end. A message comes in one piece but may be read in several.
bool isComplete(const std::string& message);

//   "<result><URL>http://h/done?a=1&amp;b=2</URL></result>"  => kSignedIn, "http://h/done?a=1&b=2"
//   "<errorNo><error>1</error></errorNo>"                   => kWindowClosed
//   "", or anything else                                    => kNoAnswer
Answer read(const std::string& message);

// One line for people.
std::string meaning(const Answer& answer);

}  // namespace launcher
