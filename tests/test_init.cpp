// Library start-up and shut-down: what VX_init makes and in which order, what VX_close leaves
// behind, silence before start-up, and start-up while memory runs out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"
#include "vxcore.h"

using namespace vxtest;

namespace {

// Every test starts and ends without a reporter: VX_close leaves the reporter pointers dangling
// on purpose, so each test forgets them itself.
class LibraryStart : public ::testing::Test {
 protected:
  void SetUp() override { forgetReporters(); }
  void TearDown() override { forgetReporters(); }
  static void forgetReporters() {
    VX_msgReporter = nullptr;
    VX_defReporter = nullptr;
  }
};

// A failure that any state of the library reports: a null reporter is refused.
VX_RET_STATUS provokeFailure() { return VX_registerReporter(nullptr); }

}  // namespace

TEST_F(LibraryStart, FailuresArePrintedOnlyBetweenInitAndClose) {
  EXPECT_STREQ(VX_getVorlaxeVersion(), "1.0.0");
  testing::internal::CaptureStderr();
  EXPECT_EQ(provokeFailure(), VX_RET_ERR_ARG);  // returned, and recorded, but not printed
  EXPECT_EQ(std::to_string(VX_getStatusCode()) + testing::internal::GetCapturedStderr(), std::to_string(VX_RET_ERR_ARG));

  VX_systemVersionRead = "2.5.0";
  VX_systemVersionWrite = "0.1.0";
  ASSERT_EQ(VX_init(), VX_RET_TRUE);
  EXPECT_STREQ(VX_getVorlaxeVersion(), "1.0.0");
  ASSERT_NE(VX_defReporter, nullptr);
  EXPECT_EQ(VX_msgReporter, static_cast<VX_BaseReporter*>(VX_defReporter));
  ASSERT_NE(VX_coutPtr, nullptr);
  EXPECT_TRUE(VX_coutPtr->objIsEnabled() && VX_systemVersionRead == "1.0.0" && VX_systemVersionWrite == "1.0.0");
  // Both managers run: a second start of either finds it there.
  EXPECT_EQ((std::vector<int>{VX_classFactoryInit(), VX_dllEntryManagerInit()}), (std::vector<int>(2, VX_RET_FALSE)));

  testing::internal::CaptureStderr();
  EXPECT_EQ(provokeFailure(), VX_RET_ERR_ARG);
  std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NE(printed.find(".\\src\\vx_globals: line "), std::string::npos) << printed;

  VX_Reporter* reporter = VX_defReporter;
  EXPECT_EQ(VX_close(), VX_RET_TRUE);
  // The reporter is gone but both pointers still name it: nothing may report after VX_close.
  EXPECT_EQ((std::vector<const void*>{VX_coutPtr, VX_defReporter, VX_msgReporter}),
            (std::vector<const void*>{nullptr, reporter, static_cast<VX_BaseReporter*>(reporter)}));
  forgetReporters();
  // Both managers stopped: each starts afresh.
  EXPECT_EQ((std::vector<int>{VX_classFactoryInit(), VX_dllEntryManagerInit()}), (std::vector<int>(2, VX_RET_TRUE)));
  VX_dllEntryManagerClose();
  VX_classFactoryClose();
}

TEST_F(LibraryStart, RunningOutOfMemoryStopsStartUpWhereItHappens) {
  CaptureReporter rep;
  // Each allocation of start-up fails in turn. Start-up stops at once with VX_RET_ERR_MEM and
  // keeps what it made (VX_close releases it). Before the default reporter exists the failure
  // goes to the reporter in place; once it exists, to standard error.
  bool reporterFailed = false, streamFailed = false;
  int failures = forEachAllocFailure([&](long) {
    VX_registerReporter(&rep);
    rep.clear();
    testing::internal::CaptureStderr();
    VX_RET_STATUS st = VX_init();
    std::string printed = testing::internal::GetCapturedStderr();
    if (!allocFaultPending()) {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      if (!VX_defReporter) {  // the reporter could not be made
        reporterFailed = true;
        EXPECT_EQ((std::vector<const void*>{VX_msgReporter, VX_coutPtr}), (std::vector<const void*>{&rep, nullptr}));
        ASSERT_EQ(rep.statuses().size(), 1u);
        EXPECT_EQ(rep.reports[0].file + " " + std::to_string(rep.reports[0].status) + printed,
                  ".\\src\\vx_init " + std::to_string(VX_RET_ERR_MEM));
      } else if (!VX_coutPtr) {  // the stream could not be made
        streamFailed = true;
        EXPECT_EQ(VX_msgReporter, static_cast<VX_BaseReporter*>(VX_defReporter));
        EXPECT_TRUE(VX_systemVersionRead == "1.0.0" && rep.reports.empty());
        EXPECT_NE(printed.find(".\\src\\vx_init: line "), std::string::npos) << printed;
      }
    } else {
      EXPECT_EQ(st, VX_RET_TRUE);
    }
    VX_registerReporter(&rep);  // the shut-down of a half-made start may report a missing manager
    VX_close();
    EXPECT_EQ(VX_coutPtr, nullptr);
    VX_defReporter = nullptr;
  });
  EXPECT_TRUE(reporterFailed && streamFailed);
  EXPECT_GE(failures, 4);  // reporter, stream, the factory's registry, the module table
}
