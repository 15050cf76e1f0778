// The host tool, run as a user would on the sample package and on packages whose modules are
// broken: exit status, standard output and errors.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "vx_tool_test_support.h"
#include "vxcore.h"

#ifndef VXTEST_TOOL_PATH
#define VXTEST_TOOL_PATH ""
#endif
#ifndef VXTEST_SAMPLE_PACKAGE
#define VXTEST_SAMPLE_PACKAGE ""
#define VXTEST_SAMPLE_GUID ""
#endif
#ifndef VXTEST_MODULE_DIR
#define VXTEST_MODULE_DIR "."
#endif

namespace {

const std::string Guid = VXTEST_SAMPLE_GUID;

class VxHost : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!*VXTEST_TOOL_PATH || !*VXTEST_SAMPLE_PACKAGE) GTEST_SKIP() << "the tools or the examples are not built";
    // The sample package with its module, and packages naming the test modules, side by side.
    std::filesystem::copy_file(VXTEST_SAMPLE_PACKAGE, tmp.file("unitconv.mpk"));
    std::filesystem::path sample(VXTEST_SAMPLE_PACKAGE);
    std::filesystem::copy_file(sample.replace_filename("unitconv.so"), tmp.file("unitconv.so"));
    for (const char* module : {"good", "no_init", "no_getpmf", "init_fails"}) {
      std::string so = std::string(module) + ".so";
      std::filesystem::copy_file(std::string(VXTEST_MODULE_DIR) + "/" + so, tmp.file(so));
      writePackage(std::string(module) + ".mpk", so);
    }
  }

  void writePackage(const std::string& name, const std::string& module) {
    VX_MPKEntry entry;
    VX_Version version(1, 0, 0);
    for (VX_RET_STATUS st : {entry.setMPKPath(tmp.file(name).c_str()), entry.setMPKName(name.c_str()),
                             entry.setMPKGUID("PKG"), entry.setMainDll(module.c_str()), entry.save(version)})
      ASSERT_LE(st, 2);
  }

  vxtest::ToolRun run(const std::string& args) { return vxtest::runTool(tmp, VXTEST_TOOL_PATH, args); }

  vxtest::TempDir tmp;
};

TEST_F(VxHost, ListsTheClassesAPackageRegistersWithTheirServicesAndArguments) {
  vxtest::ToolRun r = run("unitconv.mpk");
  EXPECT_EQ(std::to_string(r.status) + r.err, "0");
  const char* const lines[] = {
      "Package unitconv.mpk: \"Unit converter\", GUID " VXTEST_SAMPLE_GUID ", module unitconv.so\n",
      "Class UnitConverter \"Unit converter\" version 1.0.0\n  GUID " VXTEST_SAMPLE_GUID "\n",
      "  Service 1 \"Convert\" (version 1.0.0): Convert a value from one unit to another\n"
      "      in  value      Double         default 1       The value to convert\n",
      "      in  to         String         default ft      Unit wanted [m km cm mm in ft yd mi kg g lb oz K C F]\n"
      "      out result     Double          The value in the unit wanted (read only)\n",
      "  Service 2 \"Describe\" (version 1.0.0)",
      "      out factor     Double          One unit in base units"};
  for (const char* line : lines) EXPECT_NE(r.out.find(line), std::string::npos) << line << "\nin:\n" << r.out;
  // A module that registers nothing is listed as such.
  r = run("good.mpk");
  EXPECT_EQ(std::to_string(r.status) + r.out, "0Package good.mpk: \"good.mpk\", GUID PKG, module good.so\nThe module registered no class.\n");
}

TEST_F(VxHost, RunsAServiceWithTextValuesConvertedToEachArgumentsKind) {
  const std::tuple<std::string, std::string> cases[] = {  // arguments after "run GUID", output
      {"Convert value=100 from=km to=mi", "result = 62.137119\ntext = 100 km = 62.1371 mi\n"},
      {"Convert value=100 from=C to=F", "result = 212.000000\ntext = 100 C = 212 F\n"},
      {"Convert value=2.5e3 from=g to=kg", "result = 2.500000\ntext = 2500 g = 2.5 kg\n"},
      {"Convert", "result = 3.280840\ntext = 1 m = 3.28084 ft\n"},  // the declared defaults
      {"Describe unit=lb", "quantity = mass\nbase = kg\nfactor = 0.453592\n"}};
  for (const auto& [args, out] : cases) {
    vxtest::ToolRun r = run("unitconv.mpk run " + Guid + " " + args);
    EXPECT_EQ(std::to_string(r.status) + r.out + r.err, "0" + out) << args;
  }
}

TEST_F(VxHost, EveryFailureSaysWhyAndExitsNonZero) {
  const std::string usage =
      "usage: vxhost PACKAGE\n"
      "       vxhost PACKAGE run GUID SERVICE [NAME=VALUE]...\n"
      "Lists the component classes a package's module registers, or runs one service of one.\n";
  const std::string convert = "unitconv.mpk run " + Guid + " Convert ";
  std::filesystem::copy_file(tmp.file("good.so"), tmp.file("plain.txt"));
  const std::tuple<std::string, int, std::string> cases[] = {  // arguments, status, errors
      {"missing.mpk", 1,
       "vxhost: MPK Load Error: MPK path <missing.mpk> does not exist\nvxhost: missing.mpk: not a readable package\n"},
      {"plain.txt", 1, "vxhost: plain.txt: not a readable package\n"},  // after the library's reasons
      {"no_init.mpk", 1,
       "vxhost: no_init.so is not a valid MPK (or dependencies are missing)\n"
       "vxhost: Module <no_init.so> does not export VX_initPublicModule: ./no_init.so: undefined symbol: "
       "VX_initPublicModule\nvxhost: no_init.mpk: its module could not be loaded\n"},
      {"no_getpmf.mpk run X Y", 1, "vxhost: no_getpmf.mpk: its module could not be loaded\n"},
      {"init_fails.mpk", 1, "vxhost: init_fails.mpk: its module could not be loaded\n"},
      {"unitconv.mpk run NOT-A-GUID Convert", 1,
       "vxhost: unknown class NOT-A-GUID: unitconv.mpk registers no such class\n"},
      {"unitconv.mpk run " + Guid + " Invert", 1, "vxhost: unknown service Invert of class UnitConverter\n"},
      {convert + "amount=3", 1, "vxhost: unknown argument amount of service Convert (its inputs: value, from, to)\n"},
      {convert + "value=abc", 1, "vxhost: <abc> is not a value of kind Double for argument value\n"},
      {convert + "value=12kg", 1, "vxhost: <12kg> is not a value of kind Double for argument value\n"},
      {convert + "'value= 1'", 1, "vxhost: < 1> is not a value of kind Double for argument value\n"},
      {convert + "value=1e999", 1, "vxhost: <1e999> is not a value of kind Double for argument value\n"},
      // The component's own refusal, reported where it found it, then the failed status.
      {convert + "from=m to=kg", 1, "vxhost: Cannot convert m to kg\nvxhost: service Convert failed with status 3\n"},
      {convert + "to=parsec", 1, "vxhost: Unknown unit <parsec>\nvxhost: service Convert failed with status 3\n"},
      {"", 2, usage},
      {"unitconv.mpk run " + Guid, 2, usage},
      {convert + "value", 2, usage},
      {convert + "=1", 2, usage}};
  for (const auto& [args, status, err] : cases) {
    vxtest::ToolRun r = run(args);
    EXPECT_EQ(std::to_string(r.status) + r.out, std::to_string(status)) << args;
    // The last lines say why; the library's own reasons may come first.
    ASSERT_GE(r.err.size(), err.size()) << args << "\n" << r.err;
    EXPECT_EQ(r.err.substr(r.err.size() - err.size()), err) << args << "\n" << r.err;
  }
}

}  // namespace
