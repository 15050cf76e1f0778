#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

using S = std::vector<int>;
using Events = std::vector<std::string>;

// What the commands of a test did, in order: "+id" executed, "-id" undone, "~id" deleted.
struct Journal {
  std::vector<std::string> events;
  int document = 0;  // the sum of the deltas of the commands that are applied
  int live = 0;
};

// Adds `delta` to the document. failExecute / failUndo make that many next calls fail
// (VX_RET_ERR_USER) without touching the document.
class AddCmd : public VX_Command {
 public:
  AddCmd(Journal& j, int id, int delta, int failExecute = 0, int failUndo = 0)
      : j(j), id(id), delta(delta), failExecute(failExecute), failUndo(failUndo) {
    ++j.live;
  }
  ~AddCmd() override {
    --j.live;
    j.events.push_back("~" + std::to_string(id));
  }
  VX_RET_STATUS execute() override { return run(failExecute, "+", delta); }
  VX_RET_STATUS undo() override { return run(failUndo, "-", -delta); }

  Journal& j;
  int id, delta, failExecute, failUndo;

 private:
  VX_RET_STATUS run(int& fails, const char* tag, int change) {
    if (fails > 0) return --fails, VX_RET_ERR_USER;
    j.document += change;
    j.events.push_back(tag + std::to_string(id));
    return VX_RET_TRUE;
  }
};

// The reference the stack is checked against: a plain history with the same rules.
struct ModelStack {
  std::vector<AddCmd*> cmds;  // not owned: the stack under test owns them
  unsigned pos = 0;
  int add(AddCmd* c) {
    cmds.resize(pos);
    cmds.push_back(c);
    return ++pos, VX_RET_TRUE;
  }
  // Predicts from the command's own failure counters, before the real call consumes them.
  int undo() {
    if (pos == 0) return VX_RET_FALSE;
    --pos;
    return cmds[pos]->failUndo > 0 ? VX_RET_ERR_USER : VX_RET_TRUE;
  }
  int redo() {
    if (pos >= cmds.size()) return VX_RET_FALSE;
    return cmds[pos]->failExecute > 0 ? VX_RET_ERR_USER : (++pos, VX_RET_TRUE);
  }
};

}  // namespace

TEST(CmdStack, FollowsTheReferenceHistoryThroughRandomEditsWithFailingCommands) {
  vxtest::CaptureReporter rep;
  Journal j;
  {
    VX_CmdStack stack;
    ModelStack model;
    std::mt19937 rng(7);
    int nextId = 0, expectDoc = 0;
    for (int step = 0; step < 3000; ++step) {
      int op = static_cast<int>(rng() % 10);
      int st, want;
      if (op < 4) {
        // Every fifth command fails its next undo once, every seventh its next execute.
        AddCmd* c = new AddCmd(j, nextId, nextId % 13 + 1, nextId % 7 == 0, nextId % 5 == 0);
        ++nextId;
        j.document += c->delta;  // the caller has just executed it
        want = model.add(c);
        st = stack.addCmd(c);
      } else if (op < 7) {
        AddCmd* c = model.pos ? model.cmds[model.pos - 1] : nullptr;
        want = model.undo();
        st = stack.undo();
        if (c && want == VX_RET_TRUE) expectDoc -= c->delta;
      } else {
        AddCmd* c = model.pos < model.cmds.size() ? model.cmds[model.pos] : nullptr;
        want = model.redo();
        st = stack.redo();
        if (c && want == VX_RET_TRUE) expectDoc += c->delta;
      }
      if (op < 4) expectDoc += model.cmds.back()->delta;
      ASSERT_EQ(st, want) << "step " << step << " op " << op;
      ASSERT_EQ((S{int(stack.getPosition()), int(stack.numCmds()), stack.undoIsPossible(), stack.redoIsPossible()}),
                (S{int(model.pos), int(model.cmds.size()), model.pos != 0, model.pos < model.cmds.size()}))
          << "step " << step;
      ASSERT_EQ(j.document, expectDoc) << "step " << step;
      ASSERT_EQ(j.live, int(model.cmds.size())) << "discarded commands are deleted, recorded ones kept";
    }
    EXPECT_GT(nextId, 1000);
  }
  EXPECT_EQ(j.live, 0);  // the stack deleted everything it held
  EXPECT_TRUE(rep.reports.empty());
}

TEST(CmdStack, DiscardsTheRedoTailNewestFirstAndUndoMovesEvenWhenItFails) {
  vxtest::CaptureReporter rep;
  Journal j;
  VX_CmdStack stack;
  EXPECT_EQ((S{stack.undo(), stack.redo(), stack.undoIsPossible(), stack.redoIsPossible()}),
            (S{VX_RET_FALSE, VX_RET_FALSE, 0, 0}));
  for (int id : {0, 1, 2}) EXPECT_EQ(stack.addCmd(new AddCmd(j, id, 1)), VX_RET_TRUE);
  EXPECT_EQ((S{stack.undo(), stack.undo()}), (S{VX_RET_TRUE, VX_RET_TRUE}));
  j.events.clear();
  EXPECT_EQ(stack.addCmd(new AddCmd(j, 3, 1)), VX_RET_TRUE);
  EXPECT_EQ(j.events, (Events{"~2", "~1"}));
  EXPECT_EQ((S{int(stack.numCmds()), int(stack.getPosition()), stack.redoIsPossible()}), (S{2, 2, 0}));

  // A failing undo of the newest command still moves down, so the next redo runs it again.
  AddCmd* flaky = new AddCmd(j, 4, 10, 0, 1);
  stack.addCmd(flaky), j.events.clear();
  EXPECT_EQ((S{stack.undo(), int(stack.getPosition()), stack.redo(), int(stack.getPosition())}),
            (S{VX_RET_ERR_USER, 2, VX_RET_TRUE, 3}));
  EXPECT_EQ(j.events, (Events{"+4"}));
  // A failing redo does not move.
  flaky->failExecute = 1;
  EXPECT_EQ((S{stack.undo(), stack.redo(), int(stack.getPosition()), stack.redo(), int(stack.getPosition())}),
            (S{VX_RET_TRUE, VX_RET_ERR_USER, 2, VX_RET_TRUE, 3}));

  j.events.clear();
  EXPECT_EQ((S{stack.clearUndoStack(), int(stack.numCmds()), int(stack.getPosition()), stack.undo()}),
            (S{VX_RET_TRUE, 0, 0, VX_RET_FALSE}));
  EXPECT_EQ(j.events, (Events{"~4", "~3", "~0"}));
  EXPECT_EQ(stack.addCmd(nullptr), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.statuses(), S{VX_RET_ERR_ARG});
}

TEST(CmdStack, UndoLimitDeletesTheOldestAndCleanMarkFollowsThePosition) {
  vxtest::CaptureReporter rep;
  Journal j;
  VX_CmdStack stack;
  EXPECT_EQ((S{int(stack.getUndoLimit()), stack.isClean()}), (S{0, 1}));
  EXPECT_EQ(stack.setUndoLimit(3), VX_RET_TRUE);
  for (int id = 0; id < 5; ++id) stack.addCmd(new AddCmd(j, id, 1));
  EXPECT_EQ(j.events, (Events{"~0", "~1"}));
  EXPECT_EQ((S{int(stack.numCmds()), int(stack.getPosition()), stack.isClean()}), (S{3, 3, 0}));
  j.events.clear();
  EXPECT_EQ((S{stack.undo(), stack.undo(), stack.undo(), stack.undo()}),
            (S{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE}));
  EXPECT_EQ(j.events, (Events{"-4", "-3", "-2"}));
  // The limit counts done commands only: undone ones stay redoable.
  stack.redo(), stack.redo(), stack.setClean();
  EXPECT_EQ((S{stack.setUndoLimit(1), int(stack.getPosition()), int(stack.numCmds()), stack.isClean(),
               stack.undo(), stack.isClean(), stack.redo(), stack.isClean(), stack.redo(), stack.isClean()}),
            (S{VX_RET_TRUE, 1, 2, 1, VX_RET_TRUE, 0, VX_RET_TRUE, 1, VX_RET_TRUE, 0}));

  // The mark is lost once the commands that lead back to it go: by the limit ...
  stack.setUndoLimit(0), stack.setClean(), stack.setUndoLimit(1);  // marked at 2 of 2
  EXPECT_EQ((S{int(stack.getPosition()), stack.undo(), stack.isClean(), stack.redo(), stack.isClean()}),
            (S{1, VX_RET_TRUE, 0, VX_RET_TRUE, 1}));
  stack.setUndoLimit(0), stack.undo();
  EXPECT_EQ(stack.isClean(), 0);
  stack.setUndoLimit(1);  // nothing done is dropped when position 0 is within it
  // ... or by a new command recorded over undone ones that held the mark.
  stack.setClean(), stack.redo(), stack.setClean(), stack.undo();
  stack.addCmd(new AddCmd(j, 9, 1));
  EXPECT_EQ((S{stack.isClean(), stack.undo(), stack.isClean()}), (S{0, VX_RET_TRUE, 0}));
  // Emptying keeps the document's state: clean stays clean, modified stays modified.
  EXPECT_EQ((S{stack.clearUndoStack(), stack.isClean()}), (S{VX_RET_TRUE, 0}));
  stack.setClean(), stack.addCmd(new AddCmd(j, 10, 1)), stack.undo();
  EXPECT_EQ((S{stack.clearUndoStack(), stack.isClean()}), (S{VX_RET_TRUE, 1}));
  EXPECT_TRUE(rep.reports.empty());
}

TEST(CmdStack, ComparesHistoriesAndRefusesCopies) {
  vxtest::CaptureReporter rep;
  Journal j;
  VX_CmdStack a, b;
  auto fill = [&](VX_CmdStack& s, int base) {
    for (int k = 0; k < 3; ++k) {
      AddCmd* c = new AddCmd(j, base + k, 1);
      c->setCmd(100 + k);
      s.addCmd(c);
    }
  };
  fill(a, 0), fill(b, 10);
  EXPECT_EQ((S{a == a, a == b, (b.undo(), a == b), (a.undo(), a == b)}), (S{1, 1, 0, 1}));
  EXPECT_EQ((S{(a.clearUndoStack(), a == b), (a = b, int(a.numCmds())), rep.count(VX_RET_ERR_NSUP)}), (S{0, 0, 1}));
}

TEST(CmdStack, AllocationFailuresLeaveTheStackDisabledOrTheCommandWithItsCaller) {
  vxtest::CaptureReporter rep;
  Journal j;
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_CmdStack s;
    if (s.objIsEnabled()) return;
    AddCmd c(j, 0, 1);
    EXPECT_EQ((S{s.addCmd(&c), s.undo(), s.redo(), s.clearUndoStack(), s.undoIsPossible(), s.redoIsPossible(),
                 s.isClean()}),
              (S{VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, 0, 0, 0}));
  });
  EXPECT_GT(failures, 0);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 0);

  // The 65th command needs a new block of the history; when that fails the command is not
  // recorded and stays the caller's.
  VX_CmdStack s;
  for (int id = 0; id < 64; ++id) ASSERT_EQ(s.addCmd(new AddCmd(j, id, 1)), VX_RET_TRUE);
  AddCmd* extra = new AddCmd(j, 64, 1);
  vxtest::failNextAlloc();
  EXPECT_EQ((S{s.addCmd(extra), int(s.numCmds()), int(s.getPosition())}), (S{VX_RET_ERR_MEM, 64, 64}));
  EXPECT_EQ((S{s.addCmd(extra), int(s.numCmds())}), (S{VX_RET_TRUE, 65}));
  EXPECT_EQ((S{s.undo(), int(s.getPosition()), s.redo()}), (S{VX_RET_TRUE, 64, VX_RET_TRUE}));
}

TEST(Command, ArgumentsAreCopiedInOrderAndBoundsChecked) {
  vxtest::CaptureReporter rep;
  Journal j;
  AddCmd c(j, 0, 1), d(j, 1, 1);
  VX_Var a(5), b("text"), out;
  unsigned long number = 0;
  EXPECT_EQ((S{c.setCmd(42, 2, &a, &b), c.getCmd(number) > 2 ? -1 : int(number), int(c.numArgs())}),
            (S{VX_RET_TRUE, 42, 2}));
  EXPECT_EQ((S{c.getArg(1, out), std::string(out.str()) == "text", c.getArg(2, out), c.setArg(2, a)}),
            (S{VX_RET_TRUE, 1, VX_RET_ERR_ARG, VX_RET_ERR_ARG}));
  // setCmd starts from an empty list; a null pointer stops the copy.
  EXPECT_EQ((S{c.setCmd(43, 3, &b, static_cast<VX_Var*>(nullptr), &a), int(c.numArgs())}), (S{VX_RET_ERR_ARG, 1}));
  EXPECT_EQ((S{(d.setCmd(43), c == d), d.addArg(b), c == d, d.addArg(a), c == d}), (S{0, VX_RET_TRUE, 1, VX_RET_TRUE, 0}));
  static_cast<VX_Command&>(c) = d;
  EXPECT_EQ((S{c == d, int(c.numArgs()), rep.count(VX_RET_ERR_ARG)}), (S{1, 2, 3}));

  // A copy that cannot allocate its text is not kept.
  int failures = vxtest::forEachAllocFailure([&](long) {
    AddCmd e(j, 5, 1);
    VX_RET_STATUS st = e.addArg(b);
    bool failed = !vxtest::allocFaultPending();
    EXPECT_EQ((S{st > 2, int(e.numArgs())}), (S{failed, failed ? 0 : 1}));
  });
  EXPECT_GT(failures, 0);
}

TEST(CommandMulti, RunsSubCommandsForwardBothWaysAndStopsAtTheFirstFailure) {
  vxtest::CaptureReporter rep;
  Journal j;
  AddCmd x(j, 1, 1), y(j, 2, 2), z(j, 3, 4, 1, 1);
  VX_CommandMulti multi;
  VX_Var px(&x, nullptr), none(static_cast<void*>(nullptr), nullptr), py(&y, nullptr), pz(&z, nullptr);
  for (VX_Var* v : {&px, &none, &py}) multi.addArg(*v);
  EXPECT_EQ((S{multi.execute(), multi.undo()}), (S{VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_EQ(j.events, (Events{"+1", "+2", "-1", "-2"}));  // undo is not reversed

  // A failing sub-command stops the walk; what ran stays done.
  multi.addArg(pz), multi.addArg(px), j.events.clear();
  EXPECT_EQ((S{multi.execute(), j.document}), (S{VX_RET_ERR_USER, 3}));
  EXPECT_EQ(j.events, (Events{"+1", "+2"}));

  // Inside a stack the multi-command is one step; it does not own its parts.
  VX_CmdStack stack;
  VX_CommandMulti* owned = new VX_CommandMulti;
  owned->addArg(px), owned->addArg(py), stack.addCmd(owned), j.events.clear();
  EXPECT_EQ((S{stack.undo(), stack.redo()}), (S{VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_EQ(j.events, (Events{"-1", "-2", "+1", "+2"}));

  VX_Var notAPointer(7);
  VX_CommandMulti bad;
  EXPECT_EQ((bad.addArg(notAPointer), bad.execute()), VX_RET_ERR_ARG);
}
