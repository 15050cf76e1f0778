// Undo history: a long run of commands added, undone to the start and redone to the end, on the
// library's command stack against a vector of owned commands with a position, the structure a
// user would write by hand. Two lengths show whether a step far down the history costs the same
// as one near its top.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "vxcore.h"

namespace {

long counter = 0;

class AddOne : public VX_Command {
 public:
  VX_RET_STATUS execute() override { ++counter; return VX_RET_TRUE; }
  VX_RET_STATUS undo() override { --counter; return VX_RET_TRUE; }
};

struct PeerCommand {
  virtual ~PeerCommand() = default;
  virtual void execute() { ++counter; }
  virtual void undo() { --counter; }
};

void UndoRoundTripVx(benchmark::State& state) {
  const unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    VX_CmdStack stack;
    for (unsigned i = 0; i < n; ++i) {
      AddOne* cmd = new AddOne;
      cmd->execute();
      stack.addCmd(cmd);  // the stack owns it from here
    }
    while (stack.undoIsPossible()) stack.undo();
    while (stack.redoIsPossible()) stack.redo();
    benchmark::DoNotOptimize(counter);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void UndoRoundTripPeer(benchmark::State& state) {
  const unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    std::vector<std::unique_ptr<PeerCommand>> history;
    std::size_t position = 0;
    for (unsigned i = 0; i < n; ++i) {
      auto cmd = std::make_unique<PeerCommand>();
      cmd->execute();
      history.resize(position);
      history.push_back(std::move(cmd));
      ++position;
    }
    while (position > 0) history[--position]->undo();
    while (position < history.size()) history[position++]->execute();
    benchmark::DoNotOptimize(counter);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

}  // namespace

BENCHMARK(UndoRoundTripVx)->Name("UndoRoundTrip/vx")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(UndoRoundTripPeer)->Name("UndoRoundTrip/peer")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
