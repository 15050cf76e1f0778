// Status cells, the reporting functions, the default reporter's lines and the catalogue.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "vx_test_support.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

// Registers a default reporter for the test and restores the previous one afterwards.
struct DefaultReporterScope {
  VX_Reporter reporter;
  VX_BaseReporter* previous = VX_msgReporter;
  DefaultReporterScope() { VX_registerReporter(&reporter); }
  ~DefaultReporterScope() { VX_msgReporter = previous; }
};

}  // namespace

TEST(StatusCells, StatusAndUserErrorCells) {
  VX_clearStatusCode();
  EXPECT_EQ(VX_RET_TRUE, VX_getStatusCode());
  VX_setUserError(7);
  EXPECT_EQ(0, VX_getUserError());
  EXPECT_EQ(0, VX_getUserError());
}

TEST(StatusCells, ReportsWithoutReporterAreDroppedButRecorded) {
  ASSERT_EQ(nullptr, VX_msgReporter);
  CaptureStderr();
  EXPECT_EQ(VX_RET_ERR_GEN, VX_reportStatus(VX_RET_ERR_FILE, "a", 3));
  EXPECT_EQ(VX_RET_ERR_FILE, VX_getStatusCode());
  EXPECT_EQ(VX_RET_ERR_GEN, VX_reportErrorMsg("a", 1, "f", "x"));
  EXPECT_EQ(VX_RET_ERR_GEN, VX_getStatusCode());
  VX_clearStatusCode();
  EXPECT_EQ(VX_RET_ERR_GEN, VX_reportWarningMsg("a", 1, "f", "x"));
  EXPECT_EQ(VX_RET_TRUE, VX_getStatusCode());
  EXPECT_EQ(VX_RET_ERR_GEN, VX_mesg("Error message", "x"));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST(StatusCells, ReportingFunctionsReachTheRegisteredReporter) {
  vxtest::CaptureReporter capture;
  EXPECT_EQ(VX_RET_TRUE, VX_reportStatus(VX_RET_ERR_ARG, "file", 12));
  EXPECT_EQ(VX_RET_ERR_ARG, VX_getStatusCode());
  VX_reportErrorMsg("file", 13, "label", "value %d", 4);
  EXPECT_EQ(VX_RET_ERR_GEN, VX_getStatusCode());  // whatever the error, the cell says 11
  VX_clearStatusCode();
  VX_reportWarningMsg("file", 14, "warn", "w%s", "!");
  EXPECT_EQ(VX_RET_TRUE, VX_getStatusCode());
  VX_mesg("Error message", "free %d", 9);
  ASSERT_EQ(4u, capture.reports.size());
  EXPECT_EQ(vxtest::Report::Status, capture.reports[0].kind);
  EXPECT_EQ(VX_RET_ERR_ARG, capture.reports[0].status);
  EXPECT_EQ(12u, capture.reports[0].line);
  EXPECT_EQ("", capture.reports[0].func);
  EXPECT_EQ(vxtest::Report::Error, capture.reports[1].kind);
  EXPECT_EQ("value 4", capture.reports[1].text);
  EXPECT_EQ(vxtest::Report::Warning, capture.reports[2].kind);
  EXPECT_EQ("w!", capture.reports[2].text);
  EXPECT_EQ(vxtest::Report::Print, capture.reports[3].kind);
  EXPECT_EQ("free 9", capture.reports[3].text);
}

TEST(StatusCells, RegisteringNullKeepsTheCurrentReporter) {
  vxtest::CaptureReporter capture;
  EXPECT_EQ(VX_RET_ERR_ARG, VX_registerReporter(nullptr));
  EXPECT_EQ(&capture, VX_msgReporter);
  ASSERT_EQ(1u, capture.reports.size());
  EXPECT_EQ(".\\src\\vx_globals", capture.reports[0].file);
  EXPECT_EQ(VX_RET_ERR_ARG, capture.reports[0].status);
}

TEST(DefaultReporter, StatusReportLines) {
  DefaultReporterScope scope;
  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, VX_reportStatus(VX_RET_ERR_FILE, "a", 3));
  EXPECT_EQ("a: line 3: \nFile error\n\n", GetCapturedStderr());
  EXPECT_EQ(VX_RET_ERR_FILE, VX_getStatusCode());

  // Unnamed and successful statuses print only the location line.
  for (int st : {0, 1, 2, 10, 14, 16, -1}) {
    CaptureStderr();
    VX_reportStatus(static_cast<VX_RET_STATUS>(st), "b", 7);
    EXPECT_EQ("b: line 7: \n", GetCapturedStderr()) << st;
  }
  const char* expected[][2] = {{"3", "Error on function input arguments\n\n"},
                               {"4", "Memory error\n\n"},
                               {"6", "Vorlaxe object not initialized\n\n"},
                               {"7", "Required object or variable not initialized\n\n"},
                               {"8", "Operation/function/feature not supported\n\n"},
                               {"9", "Operation/function/feature not implemented\n\n"},
                               {"11", "Internal error\n\n"},
                               {"12", "Bad usage\n\n"},
                               {"13", "An iterator was accessed recursively\n\n"},
                               {"15", "User defined error\n\n"}};
  for (auto& e : expected) {
    CaptureStderr();
    VX_reportStatus(static_cast<VX_RET_STATUS>(std::stoi(e[0])), "c", 1);
    EXPECT_EQ(std::string("c: line 1: \n") + e[1], GetCapturedStderr());
  }
}

TEST(DefaultReporter, WordedReportLines) {
  DefaultReporterScope scope;
  CaptureStderr();
  VX_reportErrorMsg(nullptr, 0, "f", "x=%d\n", 4);
  EXPECT_EQ("ERROR: f\nx=4\n", GetCapturedStderr());
  EXPECT_EQ(VX_RET_ERR_GEN, VX_getStatusCode());

  CaptureStderr();
  VX_reportWarningMsg(".\\src\\vx_str", 42, nullptr, "%s", "w");
  EXPECT_EQ("WARNING: .\\src\\vx_str: line 42: \nw", GetCapturedStderr());

  CaptureStderr();
  scope.reporter.message(nullptr, 0, nullptr, nullptr);
  scope.reporter.message("m", 5, "lbl", "%d", 1);
  EXPECT_EQ("m: line 5: lbl\n1", GetCapturedStderr());

  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, VX_mesg("ignored title", "%s-%d", "p", 2));
  EXPECT_EQ("p-2", GetCapturedStderr());
}

TEST(DefaultReporter, DisabledReporterWritesItsFixedLine) {
  // A reporter copied from one that is no longer enabled is itself disabled.
  alignas(VX_Reporter) unsigned char storage[sizeof(VX_Reporter)];
  VX_Reporter* gone = new (storage) VX_Reporter;
  gone->~VX_Reporter();
  vxtest::CaptureReporter capture;
  VX_Reporter disabled(*gone);
  EXPECT_EQ(0, disabled.objIsEnabled());
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_POBJ}, capture.statuses());

  capture.clear();
  CaptureStderr();
  EXPECT_EQ(VX_RET_ERR_GEN, disabled.error("f", 1, "l", "x"));
  std::string line = GetCapturedStderr();
  EXPECT_EQ(0u, line.find("VX_Reporter::error(): object not initialized : (.\\src\\vx_reporter,"));
  EXPECT_EQ("\n\n", line.substr(line.size() - 2));
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_GEN}, capture.statuses());

  CaptureStderr();
  EXPECT_EQ(VX_RET_ERR_GEN, disabled.reportStat("f", 1, VX_RET_ERR_ARG, nullptr));
  EXPECT_EQ(0u, GetCapturedStderr().find("VX_Reporter::reportStat(): object not initialized"));
}

TEST(DefaultReporter, DisabledRegisteredReporterReportsOnceWithoutRecursing) {
  alignas(VX_Reporter) unsigned char storage[sizeof(VX_Reporter)];
  VX_Reporter* gone = new (storage) VX_Reporter;
  gone->~VX_Reporter();
  VX_Reporter* disabled;
  {
    vxtest::CaptureReporter quiet;
    disabled = new VX_Reporter(*gone);
  }
  VX_BaseReporter* previous = VX_msgReporter;
  VX_registerReporter(disabled);
  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, VX_reportStatus(VX_RET_ERR_ARG, "f", 1));
  std::string out = GetCapturedStderr();
  VX_msgReporter = previous;
  EXPECT_NE(std::string::npos, out.find("VX_Reporter::reportStat(): object not initialized"));
  EXPECT_EQ(VX_RET_ERR_GEN, VX_getStatusCode());
  {
    vxtest::CaptureReporter quiet;
    delete disabled;  // destroying a disabled reporter is itself reported
    EXPECT_EQ(std::vector<int>{VX_RET_ERR_POBJ}, quiet.statuses());
  }
}

TEST(DefaultReporter, CopyConstructionIsRefused) {
  vxtest::CaptureReporter capture;
  VX_Reporter original;
  VX_Reporter copy(original);
  EXPECT_EQ(1, copy.objIsEnabled());
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_NSUP}, capture.statuses());
  // The copy has no stream: it accepts reports and writes nothing.
  CaptureStderr();
  EXPECT_EQ(VX_RET_TRUE, copy.error("f", 1, "l", "text"));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST(Catalogue, TextsAndBounds) {
  EXPECT_STREQ("Division by zero", VX_msg(0, 4));
  EXPECT_STREQ("Index %d not in [%d,%d]", VX_msg(0, 3));
  EXPECT_STREQ("VX_StringArr free", VX_msg(1, 8));
  EXPECT_STREQ("VX_VectorArr divide vector by real", VX_msg(2, 11));
  EXPECT_STREQ("Matrix not invertible", VX_msg(3, 10));
  EXPECT_EQ(nullptr, VX_msg(0, 5));
  EXPECT_EQ(nullptr, VX_msg(1, 9));
  EXPECT_EQ(nullptr, VX_msg(3, 11));
  EXPECT_EQ(nullptr, VX_msg(4, 0));
  EXPECT_EQ(VX_RET_TRUE, VX_msgInit());
  // Sorting leaves the listed tables as they were.
  EXPECT_STREQ("VX_logErrorGen() : Unknown error code", VX_msg(0, 0));
  EXPECT_STREQ("VX_StringArr insert", VX_msg(1, 5));
  EXPECT_STREQ("Arg %d has %d vertices", VX_msg(2, 9));
  EXPECT_STREQ("incompatible matrices: %d x %d and %d x %d", VX_msg(3, 5));
}
