// Writes the seed corpus of every fuzz target: files and blocks made by the library itself, so
// the fuzzer starts from well-formed input. Usage: vx_make_corpus <corpus dir> (its
// subdirectories, one per target, must exist).
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "vx_fuzz_support.h"

namespace {

std::string root;
int seeds = 0;

void seed(const std::string& target, const std::string& bytes) {
  std::ofstream(root + "/" + target + "/seed-" + std::to_string(++seeds), std::ios::binary) << bytes;
}

std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string packed(VX_Persistable& obj) {
  char* block = nullptr;
  unsigned int size = 0;
  if (obj.pack(VX_systemVersionWrite, &block, &size, VX_STORAGE_BINARY) > 2) std::exit(1);
  std::string bytes(block, size);
  std::free(block);
  return bytes;
}

std::string byte(int b) { return std::string(1, static_cast<char>(b)); }

// A package description with every field in use.
VX_MPKEntry samplePackage() {
  VX_MPKEntry e;
  e.setMPKName("Sample package");
  e.setAppVersion(VX_Version(2, 1, 0));
  e.setMPKGUID("0F86BBF4-57F4-4d5e-8FC2-44A860AC690E");
  e.setMainDll("sample.so");
  e.setHelpFile("help/sample.html");
  e.getDependencies().appendElem(VX_String("base.mpk"));
  e.getBitmaps().appendElem(VX_MPKBitmapEntry("icon", "icon.bmp"));
  e.getBitmaps().appendElem(VX_MPKBitmapEntry("logo", "img/logo.bmp"));
  return e;
}

// One sample of each persistable kind, in the order vxfuzz::makePersistable numbers them.
std::vector<std::vector<VX_Persistable*>> samples() {
  static VX_String s1("hello"), s2(""), s3;
  static VX_Var v1(42), v2(2.5), v3("text"), v4(VX_VAR_WILD);
  static VX_VarArr a1, a2;
  VX_str2Val(a1, "1,2,3", ",", VX_VAR_INT);
  VX_str2Val(a2, "x y", " ", VX_VAR_STRING);
  static VX_Version ver(1, 2, 3);
  static VX_PubArg arg;
  arg.setName("width");
  arg.setDesc("in pixels");
  static VX_Color color(0.25f, 0.5f, 0.75f, 1.0f);
  static VX_Matrix m0, m(2, 3, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0);
  static VX_MPKEntry pkg = samplePackage();
  static VX_VarArr tmpl = vxfuzz::btreeKeyTemplate();
  static VX_BtreeNode node(5, tmpl, 4);
  return {{&s1, &s2, &s3}, {&v1, &v2, &v3, &v4}, {&a1, &a2}, {&ver}, {&arg}, {&color}, {&m0, &m}, {&pkg}, {&node}};
}

std::string tempPath(const char* name) { return root + "/../" + name + ".tmp"; }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  root = argv[1];
  auto kinds = samples();
  for (int kind = 0; kind < static_cast<int>(kinds.size()); ++kind) {
    for (VX_Persistable* obj : kinds[kind]) {
      const std::string block = packed(*obj);
      seed("unpack", byte(kind) + block);
      // The file forms: the packed block as f.write puts it, and the field-by-field persist.
      const std::string path = tempPath("restore");
      {
        VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
        unsigned int size = 0;
        obj->persist(VX_systemVersionWrite, f, size);
        f.close();
      }
      const unsigned int n = static_cast<unsigned int>(block.size());
      const std::string sizeWord = byte(n & 0xff) + byte((n >> 8) & 0xff) + byte(n >> 16 & 0xff) + byte(n >> 24);
      seed("restore", byte(kind) + byte(0) + sizeWord + block);
      seed("restore", byte(kind) + byte(1) + sizeWord + block + block);
      seed("restore", byte(kind) + byte(2) + sizeWord + fileBytes(path));
      std::remove(path.c_str());
    }
  }

  for (VX_VAR_TYPE t : {VX_VAR_INT, VX_VAR_ULONG, VX_VAR_DOUBLE, VX_VAR_STRING, VX_VAR_UCHAR, VX_VAR_WILD}) {
    VX_Var v(t);
    char* name = nullptr;
    if (VX_type2Str(v, &name) > 2) return 1;
    seed("strbase", std::string(name) + byte(0) + ",;" + byte(0) + "12,-3;4.5e3");
    std::free(name);
  }
  seed("strbase", std::string("Double") + byte(0) + " " + byte(0) + "0x1f 1e400 -0");

  seed("strfunc", byte(1) + byte(2) + byte(3) + byte(2) + "  a,b,,(c,d),e  " + byte(0) + "," + byte(0) + " ()");
  seed("strfunc", byte(0) + byte(0) + byte(9) + byte(255) + "Hello hello HELLO" + byte(0) + "LL" + byte(0) + "xx");
  seed("path", std::string("c") + byte(0) + "dir\\sub/" + byte(0) + "name" + byte(0) + "tar.gz");
  seed("path", std::string("\\\\//x/y\\") + byte(0) + "/abs" + byte(0) + "" + byte(0) + ".e");
  seed("path", std::string("q:/") + byte(0) + "a:" + byte(0) + "." + byte(0) + "..");

  seed("ascii", byte(8) + byte(1) + "two" + byte(0) + "one 12 3.5\nline two;x\r\n\nthree words here\n");
  seed("ascii", byte(40) + byte(3) + "z" + byte(0) + "-7 word\tnext\n" + std::string(300, 'w') + "\nz");

  // Record files: fixed and variable, with and without record headers, with deleted records.
  for (int variant = 0; variant < 3; ++variant) {
    const std::string path = tempPath("recfile");
    VX_Array<unsigned int> freeSizes;
    const unsigned int recSize = variant == 0 ? 12 : 0;
    if (recSize == 0) {
      for (unsigned int s : {0u, 8u, 32u}) freeSizes.appendElem(s);
    }
    const char header[] = "user header";
    VX_FileBinaryRec f(path.c_str(), 0, 0, recSize, variant != 2, header, sizeof header, recSize ? 1 : 3,
                       freeSizes);
    if (!f.objIsEnabled()) return 1;
    const char data[40] = "record data, record data, record data.";
    long offsets[5];
    for (int i = 0; i < 5; ++i)
      offsets[i] = f.autoWrite(data, VX_BINREC_SEARCH_EXACT_THEN_FIT, recSize ? recSize : 6 + 7 * i);
    if (variant != 2) f.deleteRec(offsets[1]), f.deleteRec(offsets[3]);
    f.close();
    seed("recfile", byte(0x5a) + fileBytes(path));
    std::remove(path.c_str());
  }

  // Package files: a full description and an empty one, as save writes them.
  VX_MPKEntry packages[2] = {samplePackage(), VX_MPKEntry()};
  for (VX_MPKEntry& e : packages) {
    const std::string path = tempPath("mpk");
    if (e.setMPKPath(path.c_str()) > 2 || e.save(VX_systemVersionWrite) > 2) return 1;
    seed("mpk", byte(1) + fileBytes(path));
    std::remove(path.c_str());
  }

  // File trees: (text, int) keys with and without data blocks, and a one-int key; enough
  // records for a few levels at order 5, some deleted again.
  for (int variant = 0; variant < 3; ++variant) {
    const std::string path = tempPath("btree");
    VX_VarArr tmpl = variant < 2 ? vxfuzz::btreeKeyTemplate() : VX_VarArr(1, VX_VAR_INT, 0);
    const unsigned blockSize = variant == 1 ? 8 : 0;
    {
      VX_Btree tree(const_cast<char*>(path.c_str()), 5, tmpl, 4, blockSize);
      if (!tree.objIsEnabled()) return 1;
      char rec[4] = {'r', 'e', 'c', 0}, block[8] = {'b', 'l', 'o', 'c', 'k'};
      VX_VarArr key(tmpl);
      for (int i = 0; i < 24; ++i) {
        const std::string text = "k" + std::to_string(i * 7 % 24);
        if (variant < 2) key[0] = text.c_str(), key[1] = i; else key[0] = i * 7 % 24;
        rec[3] = static_cast<char>(i);
        if (tree.writeRec(key, rec, blockSize ? block : nullptr) > 2) return 1;
      }
      for (int i = 0; i < 24; i += 5) {
        if (variant < 2) key[0] = ("k" + std::to_string(i * 7 % 24)).c_str(), key[1] = i; else key[0] = i * 7 % 24;
        tree.deleteRec(key);
      }
    }
    seed("btree", byte(variant * 3) + fileBytes(path));
    std::remove(path.c_str());
  }

  // Colour texts, as color2Str writes them and with the blanks and signs the reader allows.
  VX_Color colors[3] = {VX_Color(1.0f, 0.5f, 0.0f, 1.0f), VX_Color(VX_HSVA(120.0f, 0.5f, 0.25f, 1.0f)),
                        VX_Color(VX_CMYA(0.1f, 0.2f, 0.3f, 0.4f))};
  for (VX_Color& c : colors) {
    char* text = nullptr;
    if (c.color2Str(&text) > 2) return 1;
    seed("color", std::string(text) + byte(0) + packed(c));
    std::free(text);
  }
  seed("color", std::string("  YIQA( +.5 ,-1e-3,\t2E2 , 0 )  ") + byte(0));
  seed("color", std::string("HLSA(359.9,0.5,1,0)") + byte(0) + std::string(16, '\0'));
  return 0;
}
