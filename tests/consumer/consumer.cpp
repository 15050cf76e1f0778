// A program built outside the library's own tree, against its installed headers and shared
// object: it must compile and link with only what the library exports. It touches one member
// of each exported template instantiation family (typed files, string arrays, lists, variant
// arrays, the variant hash table, the adapters), so a hidden instantiation fails the link.
#include <cstdio>
#include <cstring>
#include <string>

#include "vxcore.h"

static int fail(const char* what) {
  std::fprintf(stderr, "consumer: %s\n", what);
  return 1;
}

int main(int argc, char** argv) {
  const std::string path = std::string(argc > 1 ? argv[1] : ".") + "/consumer.bin";
  VX_String text("alpha");
  {
    VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
    if (out.write(text) > 2 || out.close() != 0) return fail("write");
  }
  VX_String back;
  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  if (in.read(back, text.getPackedSize(VX_systemVersionWrite, VX_STORAGE_BINARY)) > 2 || !(back == text))
    return fail("read");
  in.close();
  std::remove(path.c_str());

  VX_Array<VX_String> words;
  if (VX_splitString("a;b;;c", ";", words) > 2 || words.numElems() != 3) return fail("split");
  VX_LList<VX_String> list;
  for (unsigned i = 0; i < words.numElems(); ++i) list.appendElem(words[i]);
  VX_VarArr vars;
  VX_HashTable<VX_Var, VX_Var> table(16);
  if (table.addEntry(VX_Var(1), VX_Var(2)) > 2 || table.numEntries() != 1) return fail("hash");
  VX_Stack<unsigned int> stack(4);
  VX_Queue<unsigned int> queue(4);
  VX_VCArray<unsigned int> chunks(0, 8);
  if (stack.push(7) > 2 || queue.put(8) > 2 || chunks.appendElem(9) > 2) return fail("adapters");
  std::printf("consumer: %u words, %u list elements, %u variants\n", words.numElems(), list.numElems(),
              vars.numElems());
  return 0;
}
