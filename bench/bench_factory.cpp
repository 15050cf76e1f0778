// A component's call through the class factory against the same calls made on the class itself:
// create a colour, run its "Set" service with prepared argument arrays, delete it.
#include <benchmark/benchmark.h>

#include "vxcore.h"

namespace {

const char* const kGuid = "0F86BBF4-57F4-4d5e-8FC2-44A860AC690F";

// The argument arrays both sides use, built once from the class's own tables.
struct Prepared {
  VX_Array<VX_PubArg> creation, in, out, extra;
  VX_String version{"1.0.0"}, name{"Set"};

  Prepared() {
    creation.insElems(VX_INS_BEFORE, 0, 5);
    const int c[] = {1, 255, 128, 0, 255};
    for (unsigned k = 0; k < 5; ++k) creation[k][0] = c[k];
    VX_constructInArgsFromPubService(VX_Color::getPubDescTable()->services, "1.0.0", 1, in);
    const int rgba[] = {10, 20, 30, 40};
    for (unsigned k = 0; k < 4; ++k) in[k][0] = rgba[k];
  }
};

void BM_FactoryRoad_vx(benchmark::State& state) {
  VX_classFactoryInit();
  VX_Color::initPublicInterface();
  Prepared p;
  for (auto _ : state) {
    VX_PublicClass* obj = VX_classFactoryCreateObj(kGuid, p.creation);
    VX_classFactoryObjExecute(obj, p.version, p.name, 1, p.in, p.out, p.extra);
    VX_classFactoryDelObj(obj);
    benchmark::DoNotOptimize(obj);
  }
  VX_classFactoryClose();
}

void BM_FactoryRoad_peer(benchmark::State& state) {
  Prepared p;
  for (auto _ : state) {
    VX_PublicClass* obj = VX_Color::createPublicObj(p.creation);
    VX_Color::invokePublicObj(obj, p.version, p.name, 1, p.in, p.out, p.extra);
    VX_Color::deletePublicObj(obj);
    benchmark::DoNotOptimize(obj);
  }
}

}  // namespace

BENCHMARK(BM_FactoryRoad_vx)->Name("FactoryRoad/vx");
BENCHMARK(BM_FactoryRoad_peer)->Name("FactoryRoad/peer");
