// A process of its own for the tests of the log.
//
//     log_writer file PATH COUNT TAG    appends COUNT lines to a file, TAG and a number in each
//     log_writer print MESSAGE          sends one message to debugger and standard streams
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/text.h"
#include "support/ft_log.h"

int main(int argc, char** argv) {
  using Quorvex::platform::Widen;
  Quorvex::CFTLog log(false, true);
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "file" && argc == 5) {
    log.SetHeader(L"The header\r\n");
    log.SetDestinations(Widen(argv[2]), {.appendLineEnd = true});
    const std::wstring tag = Widen(argv[4]);
    for (int i = 0; i < std::atoi(argv[3]); ++i) log.Printf(L"%s %d", tag.c_str(), i);
    return 0;
  }
  if (mode == "print" && argc == 3) {
    log.SetDestinations(
        L"",
        {.debugger = true, .standardOutput = true, .standardError = true, .appendLineEnd = true});
    std::puts("narrow before");
    log.Write(Widen(argv[2]).c_str());
    std::puts("narrow after");
    return 0;
  }
  return 2;
}
