// vxhost: loads a component package and shows or runs the classes its module registers.
//
//   vxhost PACKAGE                                   lists every class the package's module
//                                                    registered, with its services and their
//                                                    input and output arguments
//   vxhost PACKAGE run GUID SERVICE [NAME=VALUE]...  creates an object of the class, builds the
//                                                    service's arguments, sets the given inputs,
//                                                    executes it and prints its outputs
//
// The classes of a package are the GUIDs that appear in the class factory while its module is
// loaded. A SERVICE is named; when several versions of a class offer the name, the most recent
// one runs. A VALUE is text, converted to the argument's kind by the library's text conversion
// after a check that the whole text is a value of that kind.
// Exit status: 0 on success, 1 for any failure (the reason goes to standard error), 2 for a
// usage error.
#include <cerrno>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "vx_toolreport.h"
#include "vxcore.h"

namespace {

const char* const Usage =
    "usage: vxhost PACKAGE\n"
    "       vxhost PACKAGE run GUID SERVICE [NAME=VALUE]...\n"
    "Lists the component classes a package's module registers, or runs one service of one.\n";

int usage() {
  std::fputs(Usage, stderr);
  return 2;
}

int fail(const std::string& what) {
  std::fprintf(stderr, "vxhost: %s\n", what.c_str());
  return 1;
}

const char* text(const char* s) { return s ? s : ""; }

// ---- the registry ----------------------------------------------------------------------------

VX_RET_STATUS collectGuid(const char* guid, void* context) {
  static_cast<std::set<std::string>*>(context)->insert(text(guid));
  return VX_RET_TRUE;
}

std::set<std::string> registeredClasses() {
  std::set<std::string> guids;
  VX_classFactoryForEachClass(&collectGuid, &guids);
  return guids;
}

// ---- listing ---------------------------------------------------------------------------------

void listArgs(const char* direction, const VX_PubArgMap* map) {
  if (!map) return;
  for (; map->type != VX_VAR_ID_UNDEF; ++map) {
    std::printf("      %-3s %-10s %-14s", direction, text(map->name), VX_VarName(VX_varAlias2Type(map->type)));
    if (map->defaultValue) std::printf(" default %-6s", map->defaultValue);
    std::printf("  %s", text(map->desc));
    if (map->readOnly) std::printf(" (read only)");
    if (map->valueList) {
      std::printf(" [");
      for (const char* const* v = map->valueList; *v; ++v) std::printf("%s%s", v == map->valueList ? "" : " ", *v);
      std::printf("]");
    }
    std::printf("\n");
  }
}

void listClass(const std::string& guid) {
  const VX_PubDescTable* table = VX_classFactoryGetDescTable(guid.c_str());
  if (!table) {
    std::printf("Class %s: no description\n", guid.c_str());
    return;
  }
  std::printf("Class %s \"%s\" version %s\n  GUID %s\n", text(table->className), text(table->classDesc),
              text(table->version), guid.c_str());
  unsigned n = table->services ? VX_getNumPublicServices(table->services) : 0;
  if (n == 0) std::printf("  no services\n");
  for (unsigned k = 0; k < n; ++k) {
    const VX_PubService& s = table->services[k];
    std::printf("  Service %d \"%s\" (version %s): %s\n", s.function, text(s.name), text(s.version), text(s.desc));
    if (!s.inArgs && !s.outArgs) continue;
    listArgs("in", s.inArgs);
    listArgs("out", s.outArgs);
  }
}

// ---- running ---------------------------------------------------------------------------------

// The service called `name` of the greatest version, or null.
const VX_PubService* findService(const VX_PubDescTable* table, const char* name) {
  const VX_PubService* best = nullptr;
  for (const VX_PubService* s = table->services; s && s->version; ++s) {
    if (!s->name || std::strcmp(s->name, name) != 0) continue;
    if (!best || VX_Version(s->version) > VX_Version(best->version)) best = s;
  }
  return best;
}

bool wholeInteger(const char* t, bool isSigned, long long low, long long high) {
  if (!*t || std::isspace(static_cast<unsigned char>(*t)) || (!isSigned && *t == '-')) return false;
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(t, &end, 10);
  return errno == 0 && *end == '\0' && v >= low && v <= high;
}

// True when all of `t` is one value of kind `kind`, so that the library's conversion (which
// takes what it can and makes 0 of the rest) gives that value and nothing less.
bool convertsTo(VX_VAR_TYPE kind, const char* t) {
  switch (kind) {
    case VX_VAR_UCHAR:
    case VX_VAR_CHAR: return std::strlen(t) == 1;
    case VX_VAR_USHORT: return wholeInteger(t, false, 0, USHRT_MAX);
    case VX_VAR_SHORT: return wholeInteger(t, true, SHRT_MIN, SHRT_MAX);
    case VX_VAR_UINT:
    case VX_VAR_ULONG: return wholeInteger(t, false, 0, UINT_MAX);
    case VX_VAR_INT:
    case VX_VAR_LONG: return wholeInteger(t, true, INT_MIN, INT_MAX);
    case VX_VAR_FLOAT:
    case VX_VAR_DOUBLE: {
      if (!*t || std::isspace(static_cast<unsigned char>(*t))) return false;
      char* end = nullptr;
      double v = std::strtod(t, &end);
      return *end == '\0' && std::isfinite(v) && (kind == VX_VAR_DOUBLE || std::fabs(v) <= 3.4028234663852886e38);
    }
    case VX_VAR_STRING: return true;
    default: return false;  // pointers are not given as text
  }
}

// Sets the input named in "NAME=VALUE"; 0, or the exit status of the failure.
int assignInput(VX_Array<VX_PubArg>& in, const char* serviceName, const char* assignment) {
  const char* eq = std::strchr(assignment, '=');
  std::string name(assignment, eq), value(eq + 1);
  for (unsigned k = 0; k < in.numElems(); ++k) {
    if (!(in[k].getName() == name.c_str())) continue;
    if (in[k].numElems() == 0) return fail("argument " + name + " holds no value to set");
    VX_Var& v = in[k][0];
    VX_VAR_TYPE kind = v.varType();
    if (kind == VX_VAR_WILD || kind == VX_VAR_UNDEF) {  // takes any text as it is
      v = value.c_str();
      return 0;
    }
    if (!convertsTo(kind, value.c_str()))
      return fail(std::string("<").append(value).append("> is not a value of kind ")
                      .append(VX_VarName(kind)).append(" for argument ").append(name));
    return VX_str2Val(v, value.c_str()) > 2 ? fail("argument " + name + " could not be set") : 0;
  }
  std::string known;
  for (unsigned k = 0; k < in.numElems(); ++k) known += std::string(known.empty() ? "" : ", ") + text(in[k].getName());
  return fail("unknown argument " + name + " of service " + serviceName + " (its inputs: " +
              (known.empty() ? "none" : known) + ")");
}

void printOutputs(VX_Array<VX_PubArg>& out) {
  for (unsigned k = 0; k < out.numElems(); ++k) {
    char* value = nullptr;
    VX_val2Str(out[k], &value, ", ");
    std::printf("%s = %s\n", text(out[k].getName()), text(value));
    std::free(value);
  }
}

// Builds the arguments of `service`, sets the inputs, executes and prints the outputs.
int execute(VX_PublicClass* obj, const VX_PubDescTable* table, const VX_PubService* service, int nAssign,
            char** assignments) {
  VX_Array<VX_PubArg> in, out, extra;
  if (VX_constructInArgsFromPubService(table->services, service->version, service->function, in) > 2 ||
      VX_constructOutArgsFromPubService(table->services, service->version, service->function, out) > 2)
    return fail(std::string("the arguments of service ") + service->name + " could not be built");
  for (int k = 0; k < nAssign; ++k)
    if (int st = assignInput(in, service->name, assignments[k])) return st;
  VX_String version(service->version), name(service->name);
  VX_RET_STATUS st = VX_classFactoryObjExecute(obj, version, name, service->function, in, out, extra);
  if (st > 2) return fail(std::string("service ") + service->name + " failed with status " + std::to_string(st));
  printOutputs(out);
  return 0;
}

int run(const std::set<std::string>& classes, const char* path, const char* guid, const char* serviceName,
        int nAssign, char** assignments) {
  if (!classes.count(guid)) return fail(std::string("unknown class ") + guid + ": " + path + " registers no such class");
  const VX_PubDescTable* table = VX_classFactoryGetDescTable(guid);
  if (!table) return fail(std::string("class ") + guid + " gives no description");
  const VX_PubService* service = findService(table, serviceName);
  if (!service)
    return fail(std::string("unknown service ") + serviceName + " of class " + text(table->className));
  VX_PublicClass* obj = VX_classFactoryCreateObj(guid);
  if (!obj) return fail(std::string("an object of class ") + text(table->className) + " could not be created");
  int status = execute(obj, table, service, nAssign, assignments);
  if (VX_classFactoryDelObj(obj) > 2 && !status) status = fail("the object could not be deleted");
  return status;
}

// Loads the package, then lists or runs; the module is closed again before returning.
int host(int argc, char** argv) {
  const char* path = argv[1];
  VX_MPKEntry probe;
  if (probe.checkMPKFile(path) != VX_RET_TRUE) return fail(std::string(path) + ": not a readable package");
  std::set<std::string> before = registeredClasses();
  VX_MPK mpk(path);
  if (!mpk.objIsEnabled() || mpk.loadMPK() > 2) return fail(std::string(path) + ": its module could not be loaded");
  std::set<std::string> classes;
  for (const std::string& guid : registeredClasses())
    if (!before.count(guid)) classes.insert(guid);
  int status = 0;
  if (argc == 2) {
    VX_String module;
    mpk.getMainDll(module);
    std::printf("Package %s: \"%s\", GUID %s, module %s\n", path, text(mpk.getMPKName()), text(mpk.getMPKGUID()),
                text(module));
    if (classes.empty()) std::printf("The module registered no class.\n");
    for (const std::string& guid : classes) listClass(guid);
  } else {
    status = run(classes, path, argv[3], argv[4], argc - 5, argv + 5);
  }
  if (mpk.closeMPK() > 2 && !status) status = fail(std::string(path) + ": its module could not be closed");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (vxtool::answerHelp(argc, argv, Usage)) return 0;
  bool list = argc == 2;
  bool running = argc >= 5 && std::strcmp(argv[2], "run") == 0;
  if ((!list && !running) || argv[1][0] == '\0') return usage();
  for (int k = 5; running && k < argc; ++k)
    if (!std::strchr(argv[k], '=') || argv[k][0] == '=') return usage();

  if (VX_init() > 2) return fail("the library could not be started");
  vxtool::ToolReporter reporter("vxhost");
  VX_registerReporter(&reporter);
  int status = host(argc, argv);
  std::fflush(stdout);
  VX_close();
  VX_msgReporter = nullptr;
  return status;
}
