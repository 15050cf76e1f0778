// Status cells, the reporting functions, the default reporter's lines and the catalogue.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "vx_test_support.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

using Ints = std::vector<int>;

// Registers a default reporter for the test and restores the previous one afterwards.
struct DefaultReporterScope {
  VX_Reporter reporter;
  VX_BaseReporter* previous = VX_msgReporter;
  DefaultReporterScope() { VX_registerReporter(&reporter); }
  ~DefaultReporterScope() { VX_msgReporter = previous; }
};

// A reporter that is no longer enabled: a copy of one that was destroyed.
VX_Reporter* newDisabledReporter() {
  alignas(VX_Reporter) static unsigned char storage[sizeof(VX_Reporter)];
  VX_Reporter* gone = new (storage) VX_Reporter;
  gone->~VX_Reporter();
  vxtest::CaptureReporter quiet;
  VX_Reporter* disabled = new VX_Reporter(*gone);
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_POBJ}, quiet.statuses());
  return disabled;
}

}  // namespace

TEST(StatusCells, CellsAndDroppedReports) {
  VX_clearStatusCode();
  EXPECT_EQ((Ints{VX_getStatusCode(), (VX_setUserError(7), VX_getUserError())}), (Ints{VX_RET_TRUE, 0}));

  // No reporter yet: every report is dropped, but the status cell still changes.
  ASSERT_EQ(nullptr, VX_msgReporter);
  CaptureStderr();
  EXPECT_EQ((Ints{VX_reportStatus(VX_RET_ERR_FILE, "a", 3), VX_getStatusCode(), VX_reportErrorMsg("a", 1, "f", "x"),
                  VX_getStatusCode(), (VX_clearStatusCode(), VX_reportWarningMsg("a", 1, "f", "x")), VX_getStatusCode(),
                  VX_mesg("Error message", "x")}),
            (Ints{VX_RET_ERR_GEN, VX_RET_ERR_FILE, VX_RET_ERR_GEN, VX_RET_ERR_GEN, VX_RET_ERR_GEN, VX_RET_TRUE,
                  VX_RET_ERR_GEN}));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST(StatusCells, ReportsReachTheRegisteredReporter) {
  vxtest::CaptureReporter capture;
  // Whatever the error, the cell says 11 after a worded error.
  EXPECT_EQ((Ints{VX_reportStatus(VX_RET_ERR_ARG, "file", 12), VX_getStatusCode(),
                  (VX_reportErrorMsg("file", 13, "label", "value %d", 4), VX_getStatusCode()),
                  (VX_clearStatusCode(), VX_reportWarningMsg("file", 14, "warn", "w%s", "!"), VX_getStatusCode())}),
            (Ints{VX_RET_TRUE, VX_RET_ERR_ARG, VX_RET_ERR_GEN, VX_RET_TRUE}));
  VX_mesg("Error message", "free %d", 9);
  ASSERT_EQ(4u, capture.reports.size());
  const auto& r = capture.reports;
  EXPECT_EQ((Ints{r[0].status, r[0].func == "", r[1].kind, r[1].text == "value 4", r[2].kind, r[3].text == "free 9"}),
            (Ints{VX_RET_ERR_ARG, 1, vxtest::Report::Error, 1, vxtest::Report::Warning, 1}));

  // A null reporter is refused and the current one stays.
  capture.clear();
  EXPECT_EQ((Ints{VX_registerReporter(nullptr), VX_msgReporter == &capture, int(capture.reports.size())}),
            (Ints{VX_RET_ERR_ARG, 1, 1}));
  EXPECT_EQ(".\\src\\vx_globals", capture.reports.at(0).file);
}

TEST(DefaultReporter, StatusReportLines) {
  DefaultReporterScope scope;
  const char* texts[16] = {nullptr, nullptr, nullptr, "Error on function input arguments\n\n", "Memory error\n\n",
                           "File error\n\n", "Vorlaxe object not initialized\n\n",
                           "Required object or variable not initialized\n\n",
                           "Operation/function/feature not supported\n\n",
                           "Operation/function/feature not implemented\n\n", nullptr, "Internal error\n\n",
                           "Bad usage\n\n", "An iterator was accessed recursively\n\n", nullptr,
                           "User defined error\n\n"};
  for (int st = -1; st <= 16; ++st) {
    CaptureStderr();
    EXPECT_EQ(VX_RET_TRUE, VX_reportStatus(static_cast<VX_RET_STATUS>(st), "a", 3));
    const char* text = st >= 0 && st < 16 ? texts[st] : nullptr;
    EXPECT_EQ(std::string("a: line 3: \n") + (text ? text : ""), GetCapturedStderr()) << st;
  }
}

TEST(DefaultReporter, WordedReportLines) {
  DefaultReporterScope scope;
  CaptureStderr();
  VX_reportErrorMsg(nullptr, 0, "f", "x=%d\n", 4);
  VX_reportWarningMsg(".\\src\\vx_str", 42, nullptr, "%s", "w");
  scope.reporter.message(nullptr, 0, nullptr, nullptr);
  scope.reporter.message("m", 5, "lbl", "%d", 1);
  EXPECT_EQ(VX_RET_TRUE, VX_mesg("ignored title", "%s-%d", "p", 2));
  EXPECT_EQ("ERROR: f\nx=4\nWARNING: .\\src\\vx_str: line 42: \nwm: line 5: lbl\n1p-2", GetCapturedStderr());
}

TEST(DefaultReporter, DisabledReporterWritesItsFixedLineOnce) {
  VX_Reporter* disabled = newDisabledReporter();
  EXPECT_EQ(0, disabled->objIsEnabled());
  {
    vxtest::CaptureReporter capture;
    CaptureStderr();
    EXPECT_EQ(VX_RET_ERR_GEN, disabled->error("f", 1, "l", "x"));
    std::string line = GetCapturedStderr();
    EXPECT_EQ(0u, line.find("VX_Reporter::error(): object not initialized : (.\\src\\vx_reporter,"));
    EXPECT_EQ("\n\n", line.substr(line.size() - 2));
    EXPECT_EQ(std::vector<int>{VX_RET_ERR_GEN}, capture.statuses());
  }
  // Registered, it reports its own failure once instead of recursing.
  VX_BaseReporter* previous = VX_msgReporter;
  VX_registerReporter(disabled);
  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, VX_reportStatus(VX_RET_ERR_ARG, "f", 1));
  std::string out = GetCapturedStderr();
  VX_msgReporter = previous;
  EXPECT_EQ(0u, out.find("VX_Reporter::reportStat(): object not initialized"));
  EXPECT_EQ(out.rfind("VX_Reporter::reportStat()"), out.find("VX_Reporter::reportStat()"));
  EXPECT_EQ(VX_RET_ERR_GEN, VX_getStatusCode());
  vxtest::CaptureReporter capture;
  delete disabled;
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_POBJ}, capture.statuses());
}

TEST(DefaultReporter, CopyConstructionIsRefusedAndTheCopyHasNoStream) {
  vxtest::CaptureReporter capture;
  VX_Reporter original;
  VX_Reporter copy(original);
  EXPECT_TRUE(copy.objIsEnabled() && capture.statuses() == Ints{VX_RET_ERR_NSUP});
  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, copy.error("f", 1, "l", "text"));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST(Catalogue, TextsBoundsAndSorting) {
  struct {
    unsigned category, number;
    const char* text;
  } rows[] = {{0, 0, "VX_logErrorGen() : Unknown error code"}, {0, 3, "Index %d not in [%d,%d]"},
              {0, 4, "Division by zero"}, {0, 5, nullptr}, {1, 5, "VX_StringArr insert"}, {1, 8, "VX_StringArr free"},
              {1, 9, nullptr}, {2, 9, "Arg %d has %d vertices"}, {2, 11, "VX_VectorArr divide vector by real"},
              {3, 5, "incompatible matrices: %d x %d and %d x %d"}, {3, 10, "Matrix not invertible"},
              {3, 11, nullptr}, {4, 0, nullptr}};
  for (int pass = 0; pass < 2; ++pass) {  // sorting leaves the listed tables as they were
    for (auto& r : rows) EXPECT_STREQ(r.text, VX_msg(r.category, r.number)) << r.category << " " << r.number;
    EXPECT_EQ(VX_RET_TRUE, VX_msgInit());
  }
}
