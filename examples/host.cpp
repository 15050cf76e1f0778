// A host that walks a component's road, step by step, on the sample package unitconv.mpk:
//
//   host [PACKAGE]        (default: unitconv.mpk in the current directory)
//
// Copy it to drive a component of your own. A host knows a component only by its package and
// its class GUID; everything else (services, arguments, properties) it learns from the class's
// static description at run time. Each step prints what it did; any failure prints why and
// ends the program with status 1.
#include <cstdio>
#include <cstdlib>

#include "vxcore.h"

namespace {

int failed(const char* step) {
  std::fprintf(stderr, "host: %s failed\n", step);
  return 1;
}

// A variant as text, a string in quotes; texts from the library come from malloc and are
// released with free.
void printValue(const VX_Var& value) {
  char* text = nullptr;
  const char* quote = value.varType() == VX_VAR_STRING ? "\"" : "";
  if (VX_val2Str(value, &text) <= 2) std::printf("%s%s%s", quote, text, quote);
  std::free(text);
}

// One line per argument: name = value.
void printArgs(const char* lead, VX_Array<VX_PubArg>& args) {
  for (unsigned k = 0; k < args.numElems(); ++k) {
    std::printf("%s%s = ", lead, static_cast<const char*>(args[k].getName()));
    printValue(args[k][0]);
    std::printf("\n");
  }
}

// Lists the properties the object hands out for `id`; the host releases them afterwards.
VX_RET_STATUS printProperties(VX_PublicClass* obj, const char* id) {
  VX_PublicObjMesg msg(id);
  VX_RET_STATUS st = obj->publicMesg(msg);
  for (unsigned k = 0; st <= 2 && k < msg.outArgs.numElems(); ++k) {
    auto* prop = static_cast<VX_CompProp*>(msg.outArgs[k].ptr());
    if (!prop) continue;
    std::printf("     %-20s %-40s ", static_cast<const char*>(prop->name), static_cast<const char*>(prop->label));
    printValue(prop->value);
    std::printf("%s\n", prop->readOnly ? "  (read only)" : "");
  }
  VX_CompProp::releaseAll(msg.outArgs);
  return st;
}

// Sends SET_PROPS with two properties: the instance name (a base property) and the class's
// own "Precision".
VX_RET_STATUS setProperties(VX_PublicClass* obj) {
  VX_PublicObjMesg msg(VX_PUB_OBJ_MESG_SET_PROPS);
  VX_CompProp* name = VX_CompProp::create();
  VX_CompProp* precision = VX_CompProp::create();
  VX_RET_STATUS st = name && precision ? msg.inArgs.insElems(VX_INS_BEFORE, 0, 2) : VX_RET_ERR_MEM;
  if (st <= 2) {
    name->name = VX_PublicClassDesc::PubMesgArgCompName();
    name->value = "Kitchen converter";
    precision->name = "Precision";
    precision->value = 4;
    msg.inArgs[0] = static_cast<void*>(name);
    msg.inArgs[1] = static_cast<void*>(precision);
    st = obj->publicMesg(msg);
    VX_CompProp::releaseAll(msg.inArgs);  // the properties went in with the message: release them
  } else {
    VX_CompProp::release(name);
    VX_CompProp::release(precision);
  }
  return st;
}

// Finds the service by name in the class's table, builds its arguments from the service's
// maps (each argument starts at its declared default), sets the inputs that `fill` gives,
// executes and prints the outputs.
template <class Fill>
VX_RET_STATUS runService(VX_PublicClass* obj, const char* serviceName, Fill fill) {
  const VX_PubDescTable* table = obj->getPubObjDescTable();
  const VX_PubService* service = VX_findPublicService(table->services, serviceName);
  if (!service) return VX_RET_ERR_ARG;
  std::printf("   service %d \"%s\" (version %s): %s\n", service->function, service->name, service->version,
              service->desc);
  VX_Array<VX_PubArg> in, out, extra;
  VX_RET_STATUS st = VX_constructInArgsFromPubService(table->services, service->version, service->function, in);
  if (st <= 2) st = VX_constructOutArgsFromPubService(table->services, service->version, service->function, out);
  if (st > 2) return st;
  fill(in);  // element 0 of each argument is its value
  printArgs("     in  ", in);
  VX_String version(service->version), name(service->name);
  st = VX_classFactoryObjExecute(obj, version, name, service->function, in, out, extra);
  if (st > 2) return st;
  printArgs("     out ", out);
  return st;
}

// Everything between start-up and shut-down, so that the package and the object are gone
// before VX_close: a module's code must not outlive the library's managers.
int walk(const char* path) {
  // 2. Open the package and load its module: the module's VX_initPublicModule registers its
  //    class with the factory.
  VX_MPK mpk(path);
  if (!mpk.objIsEnabled() || mpk.openMPK() > 2) return failed("opening the package");
  VX_String module;
  mpk.getMainDll(module);
  std::printf("2. package %s: \"%s\", module %s, GUID %s\n", path, mpk.getMPKName(),
              static_cast<const char*>(module), mpk.getMPKGUID());
  if (mpk.loadMPK() > 2) return failed("loading the module");
  std::printf("   module loaded and initialised: its class is registered with the factory\n");

  // 3. Create an object through the factory, knowing only the class GUID (the sample package
  //    carries its class's GUID as its own).
  const char* guid = mpk.getMPKGUID();
  VX_PublicClass* obj = VX_classFactoryCreateObj(guid);
  if (!obj) return failed("creating the object");
  const VX_PubDescTable* table = obj->getPubObjDescTable();
  std::printf("3. created a %s (\"%s\", class version %s)\n", table->className, table->classDesc, table->version);

  // 4. Properties: read them, set two, read them again.
  int status = 0;
  std::printf("4. properties (GET_VIEW):\n");
  if (printProperties(obj, VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS) > 2) status = failed("reading the properties");
  if (!status && setProperties(obj) > 2) status = failed("setting the properties");
  if (!status) {
    std::printf("   after SET_PROPS (ComponentName, Precision):\n");
    if (printProperties(obj, VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS) > 2) status = failed("reading the properties");
  }

  // 5. Services: find, build the arguments, execute, read the outputs.
  if (!status) {
    std::printf("5. services:\n");
    VX_RET_STATUS st = runService(obj, "Convert", [](VX_Array<VX_PubArg>& in) {
      in[0][0] = 100.0;  // value
      in[1][0] = "km";   // from
      in[2][0] = "mi";   // to
    });
    if (st <= 2) st = runService(obj, "Describe", [](VX_Array<VX_PubArg>& in) { in[0][0] = "F"; });
    if (st > 2) status = failed("running a service");
  }

  // 6. Delete the object through the factory (its class's own delete runs), then close the
  //    package: the module's VX_closePublicModule unregisters the class and the module goes.
  if (VX_classFactoryDelObj(obj) > 2) status = failed("deleting the object");
  if (mpk.closeMPK() > 2) status = failed("closing the package");
  if (!status) std::printf("6. object deleted, package closed\n");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : "unitconv.mpk";
  // 1. Start the library: default reporter, format versions, output stream, class factory,
  //    module manager. Until this call failures are returned but not printed.
  if (VX_init() > 2) return failed("VX_init");
  std::printf("1. VX_init: Vorlaxe %s started\n", VX_getVorlaxeVersion());
  int status = walk(path);
  // 7. Shut down. No report may follow: the default reporter is gone.
  VX_close();
  std::printf("7. VX_close: library stopped\n");
  return status;
}
