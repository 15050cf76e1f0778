// The reporter of the command-line tools: each worded report becomes one plain line on standard
// error, led by the program's name ("vxmpk: MPK path is empty"). Bare status reports are not
// printed: the worded reports and the tool's own last line already say what went wrong. The
// tools' common answer to a request for help lives here too.
#ifndef VX_TOOLREPORT_H
#define VX_TOOLREPORT_H

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vx_reporter.h"

namespace vxtool {

// Every tool answers a lone "-h" or "--help" alike: its usage on standard output, exit 0. True
// when it has answered.
inline bool answerHelp(int argc, char** argv, const char* usage) {
  if (argc != 2 || (std::strcmp(argv[1], "-h") != 0 && std::strcmp(argv[1], "--help") != 0)) return false;
  std::fputs(usage, stdout);
  return true;
}

class ToolReporter : public VX_BaseReporter {
 public:
  explicit ToolReporter(const char* program) : program(program) {}

  using VX_BaseReporter::error;
  using VX_BaseReporter::message;
  using VX_BaseReporter::print;
  using VX_BaseReporter::warning;
  VX_RET_STATUS warning(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("warning: ", format, args);
  }
  VX_RET_STATUS error(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("", format, args);
  }
  VX_RET_STATUS message(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("", format, args);
  }
  VX_RET_STATUS print(const char*, const char* format, va_list args) override { return line("", format, args); }
  VX_RET_STATUS reportStat(const char*, unsigned, VX_RET_STATUS, const char*) override { return VX_RET_TRUE; }

 private:
  VX_RET_STATUS line(const char* kind, const char* format, va_list args) {
    char text[2048];
    std::vsnprintf(text, sizeof text, format ? format : "", args);
    std::size_t n = std::strlen(text);
    while (n && text[n - 1] == '\n') text[--n] = '\0';
    std::fprintf(stderr, "%s: %s%s\n", program, kind, text);
    return VX_RET_TRUE;
  }

  const char* program;
};

}  // namespace vxtool

#endif
