// Colour models, their conversions, and the colour object as a public class.
#define VX_MODULE_LABEL ".\\src\\vx_color"

#include "vx_color.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "vx_report.h"
#include "vx_varargs.h"
#include "vx_unpack.h"

// ---- conversions -----------------------------------------------------------------------------

VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseRGBA& src, VX_BaseCMYA& dst) {
  VX_setUserError(0);
  dst.set(1.0f - src.red, 1.0f - src.green, 1.0f - src.blue, src.alpha);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseCMYA& src, VX_BaseRGBA& dst) {
  VX_setUserError(0);
  dst.set(1.0f - src.cyan, 1.0f - src.magenta, 1.0f - src.yellow, src.alpha);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseRGBA& src, VX_BaseHSVA& dst) {
  VX_setUserError(0);
  const float r = src.red, g = src.green, b = src.blue;
  float max = std::fmax(r, std::fmax(g, b)), min = std::fmin(r, std::fmin(g, b));
  dst.alpha = src.alpha;
  dst.value = max;
  dst.saturation = std::fabs(max) >= VX_COLOR_TOLERANCE ? (max - min) / max : 0.0f;
  if (std::fabs(dst.saturation) < VX_COLOR_TOLERANCE) {
    dst.saturation = 0.0f;
    dst.hue = VX_COLOR_NO_HUE;
    return VX_RET_TRUE;
  }
  float d = max - min, hue = 0.0f;
  if (std::fabs(r - max) < VX_COLOR_TOLERANCE)
    hue = (g - b) / d;
  else if (std::fabs(g - max) < VX_COLOR_TOLERANCE)
    hue = (b - r) / d + 2.0f;
  else if (std::fabs(b - max) < VX_COLOR_TOLERANCE)
    hue = (r - g) / d + 4.0f;
  hue *= 60.0f;
  if (hue < 0.0f) hue += 360.0f;
  dst.hue = hue;
  return VX_RET_TRUE;
}

// ---- the colour object -----------------------------------------------------------------------

namespace {

const char* const kModelNames[] = {"RGBA", "CMYA", "YIQA", "HSVA", "HLSA"};

bool validModel(int m) { return m >= VX_COLOR_RGBA && m <= VX_COLOR_HLSA; }

}  // namespace

VX_Color::VX_Color() { init(); }
VX_Color::VX_Color(float r, float g, float b, float a) { set(r, g, b, a); }
VX_Color::VX_Color(int r, int g, int b, int a) { set(r, g, b, a); }
VX_Color::VX_Color(const VX_BaseRGBA& c) { assign(VX_COLOR_RGBA, c.red, c.green, c.blue, c.alpha); }
VX_Color::VX_Color(const VX_BaseCMYA& c) { assign(VX_COLOR_CMYA, c.cyan, c.magenta, c.yellow, c.alpha); }
VX_Color::VX_Color(const VX_BaseYIQA& c) { assign(VX_COLOR_YIQA, c.Y, c.I, c.Q, c.alpha); }
VX_Color::VX_Color(const VX_BaseHSVA& c) { assign(VX_COLOR_HSVA, c.hue, c.saturation, c.value, c.alpha); }
VX_Color::VX_Color(const VX_BaseHLSA& c) { assign(VX_COLOR_HLSA, c.hue, c.lightness, c.saturation, c.alpha); }
VX_Color::~VX_Color() = default;

void VX_Color::assign(int m, float c0, float c1, float c2, float c3) {
  VX_setUserError(0);
  model = m;
  channel[0] = c0, channel[1] = c1, channel[2] = c2, channel[3] = c3;
}

void VX_Color::init() { assign(VX_COLOR_RGBA, 1.0f, 1.0f, 1.0f, 1.0f); }

void VX_Color::set(float r, float g, float b, float a) { assign(VX_COLOR_RGBA, r, g, b, a); }

void VX_Color::set(int r, int g, int b, int a) {
  VX_RGBA c(r, g, b, a);
  assign(VX_COLOR_RGBA, c.red, c.green, c.blue, c.alpha);
}

VX_Color& VX_Color::operator=(const VX_Color& other) {
  if (&other != this) assign(other.model, other.channel[0], other.channel[1], other.channel[2], other.channel[3]);
  return *this;
}

unsigned char VX_Color::operator==(const VX_Color& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  if (model != other.model || !validModel(model)) return 0;
  for (int k = 0; k < 4; ++k)
    if (!VX_colorChannelsEqual(channel[k], other.channel[k])) return 0;
  return 1;
}

VX_RET_STATUS VX_Color::toRGBA(VX_BaseRGBA& rgba) const {
  if (model == VX_COLOR_RGBA) {
    rgba.set(channel[0], channel[1], channel[2], channel[3]);
    return VX_RET_TRUE;
  }
  if (model == VX_COLOR_CMYA) {
    VX_CMYA cmya(channel[0], channel[1], channel[2], channel[3]);
    return VX_COLOR_CONVERT(cmya, rgba);
  }
  VX_REPORT_ERROR("VX_Color RGBA channels", "No conversion from colour model %d to RGBA", static_cast<int>(model));
  return VX_RET_ERR_NSUP;
}

// ---- text form -------------------------------------------------------------------------------

VX_RET_STATUS VX_Color::color2Str(char** out) const {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  *out = nullptr;
  if (!validModel(model)) {
    VX_REPORT_ERROR("VX_Color text form", "Colour model %d has no text form", static_cast<int>(model));
    return VX_RET_ERR_ARG;
  }
  char text[160];
  std::snprintf(text, sizeof text, "%s(%.6g, %.6g, %.6g, %.6g)", kModelNames[model - 1], channel[0], channel[1],
                channel[2], channel[3]);
  *out = VX_strdup(text);
  return *out ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

namespace {

const char* skipBlanks(const char* p) {
  while (*p == ' ' || *p == '\t') ++p;
  return p;
}

// One finite decimal number at `p` (blanks around it allowed); null when there is none.
const char* readChannel(const char* p, float& value) {
  p = skipBlanks(p);
  // strtof would take hexadecimal, infinity and NaN spellings: only digits, a sign or a point
  // may start a channel.
  if (!(*p >= '0' && *p <= '9') && *p != '-' && *p != '+' && *p != '.') return nullptr;
  const char* digits = p + (*p == '-' || *p == '+');
  if (!((*digits >= '0' && *digits <= '9') || *digits == '.')) return nullptr;
  if (digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) return nullptr;
  char* end = nullptr;
  // A number too small for a normal float is still finite and read as the nearest float (strtof
  // flags it out of range): color2Str writes such channels, so they must read back.
  value = std::strtof(p, &end);
  if (end == p || !std::isfinite(value)) return nullptr;
  return skipBlanks(end);
}

}  // namespace

VX_RET_STATUS VX_Color::str2Color(const char* text) {
  VX_setUserError(0);
  if (!text) return VX_FAIL(VX_RET_ERR_ARG);
  const char* p = skipBlanks(text);
  int m = 0;
  for (int k = 0; k < 5 && !m; ++k)
    if (std::strncmp(p, kModelNames[k], 4) == 0 && p[4] == '(') m = k + 1;
  float c[4];
  bool ok = m != 0;
  if (ok) p += 5;
  for (int k = 0; ok && k < 4; ++k) {
    p = readChannel(p, c[k]);
    ok = p && *p == (k < 3 ? ',' : ')');
    if (ok) ++p;
  }
  if (!ok || *skipBlanks(p) != '\0') {
    VX_REPORT_ERROR("VX_Color text form", "Not a colour text: <%.40s>", text);
    return VX_RET_ERR_ARG;
  }
  assign(m, c[0], c[1], c[2], c[3]);
  return VX_RET_TRUE;
}

// ---- packing ---------------------------------------------------------------------------------

constexpr unsigned VX_COLOR_PACKED_SIZE = 16;

unsigned int VX_Color::getPackedSize(VX_Version&, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  return storage == VX_STORAGE_BINARY ? VX_COLOR_PACKED_SIZE : 0;
}

VX_RET_STATUS VX_Color::pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  for (std::size_t k = 0; k < 4; ++k) VX_putLE(buffer + 4 * k, channel[k]);
  size = VX_COLOR_PACKED_SIZE;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Color::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_unpackHas(buffer, VX_COLOR_PACKED_SIZE)) {
    VX_REPORT_ERROR("VX_Color unpack", "Packed colour needs %u bytes", static_cast<unsigned>(VX_COLOR_PACKED_SIZE));
    return VX_RET_ERR_ARG;
  }
  for (std::size_t k = 0; k < 4; ++k) channel[k] = VX_getLE<float>(buffer + 4 * k);
  size = VX_COLOR_PACKED_SIZE;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Color::persist(VX_Version&, VX_FileBinary&, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  return VX_FAIL(VX_RET_ERR_NIMP);
}

VX_RET_STATUS VX_Color::restore(VX_Version&, VX_FileBinary&, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  return VX_FAIL(VX_RET_ERR_NIMP);
}

// ---- public class ----------------------------------------------------------------------------

namespace {

const VX_PubArgMap kChannels[] = {
    {VX_VAR_ID_INT, "R", "R channel (0-255)", 1, nullptr, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, nullptr, 0, 0},
    {VX_VAR_ID_INT, "G", "G channel (0-255)", 1, nullptr, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, nullptr, 0, 0},
    {VX_VAR_ID_INT, "B", "B channel (0-255)", 1, nullptr, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, nullptr, 0, 0},
    {VX_VAR_ID_INT, "A", "A channel (0-255)", 1, nullptr, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, nullptr, 0, 0},
    {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0}};
const VX_PubService kServices[] = {{"1.0.0", 1, "Set", "Set RGBA color", kChannels, nullptr},
                                   {"1.0.0", 2, "Get", "Get RGBA color", nullptr, kChannels},
                                   {nullptr, -1, nullptr, nullptr, nullptr, nullptr}};
const VX_PubService* const kGroup[] = {&kServices[0], &kServices[1], nullptr};
const VX_PubServGrpList kGroups[] = {{"1.0.0", kGroup}, {nullptr, nullptr}};
const char* const kVersions[] = {"1.0.0", nullptr};
// The block the library's own tables point field 10 at.
const uint32_t kZeroBlock[4] = {0, 0, 0, 0};
const VX_PubDescTable kTable = {"1.0.0", "0F86BBF4-57F4-4d5e-8FC2-44A860AC690F", "VX_Color", "Color object",
                                nullptr, kServices, kGroups, nullptr, kVersions, 0, kZeroBlock, nullptr,
                                nullptr, nullptr};

// The value of an argument as `t` (the argument's own kind is read directly).
template <class V>
bool argValue(VX_Array<VX_PubArg>& args, unsigned k, VX_VAR_TYPE t, V& out) {
  VX_Var& v = args[k][0];
  if (v.varType() == t) {
    v.get(&out);
    return true;
  }
  VX_Var copy(v);
  if (!copy.objIsEnabled() || copy.cast(t) > 2) return false;
  copy.get(&out);
  return true;
}

}  // namespace

const VX_PubDescTable* VX_Color::getPubDescTable() { return &kTable; }
const VX_PubDescTable* VX_Color::getPubObjDescTable() { return &kTable; }

VX_RET_STATUS VX_Color::publicMesg(VX_PublicObjMesg& msg) { return VX_PublicClass::publicMesg(msg); }

VX_RET_STATUS VX_Color::publicEntry(VX_PubInterface& iface) {
  iface.create = &createPublicObj;
  iface.del = &deletePublicObj;
  iface.invoke = &invokePublicObj;
  return VX_RET_TRUE;
}

VX_PublicClass* VX_Color::createPublicObj(VX_Array<VX_PubArg>& args) {
  VX_setUserError(0);
  float c[4] = {1.0f, 1.0f, 1.0f, 1.0f};
  if (args.numElems() > 0) {
    int form = 0;
    bool ok = argValue(args, 0, VX_VAR_INT, form) && (form == 1 || form == 5) && args.numElems() >= 5;
    for (unsigned k = 0; ok && k < 4; ++k) {
      int i = 0;
      ok = form == 1 ? argValue(args, k + 1, VX_VAR_INT, i) : argValue(args, k + 1, VX_VAR_FLOAT, c[k]);
      if (form == 1) c[k] = static_cast<float>(i) * VX_COLOR_INT_SCALE;
    }
    if (!ok) {
      VX_REPORT_ERROR("VX_Color create", "Creation arguments are none, 1 and four ints, or 5 and four floats");
      return nullptr;
    }
  }
  VX_Color* color = VX_newObject<VX_Color>(c[0], c[1], c[2], c[3]);
  if (!color) VX_REPORT_STATUS(VX_RET_ERR_MEM);
  return color;
}

VX_RET_STATUS VX_Color::deletePublicObj(VX_PublicClass* obj) {
  VX_setUserError(0);
  if (!obj) return VX_FAIL(VX_RET_ERR_ARG);
  // The whole object: its block starts at the colour, not at this base.
  VX_deleteObject(static_cast<VX_Color*>(obj));
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Color::invokePublicObj(VX_PublicClass* obj, VX_String& version, VX_String&, int function,
                                        VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out, VX_Array<VX_PubArg>&) {
  VX_setUserError(0);
  if (!obj) return VX_FAIL(VX_RET_ERR_ARG);
  if (!(version == "1.0.0")) return VX_RET_TRUE;
  VX_Color& color = *static_cast<VX_Color*>(obj);
  if (function == 1) {
    int c[4];
    bool ok = in.numElems() >= 4;
    for (unsigned k = 0; ok && k < 4; ++k) ok = argValue(in, k, VX_VAR_INT, c[k]);
    if (!ok) return VX_FAIL(VX_RET_ERR_ARG);
    color.set(c[0], c[1], c[2], c[3]);
  } else if (function == 2) {
    VX_RGBA rgba;
    VX_RET_STATUS st = color.toRGBA(rgba);
    if (st > 2 || (st = out.delAll()) > 2 || (st = out.insElems(VX_INS_BEFORE, 0, 4)) > 2) return st;
    const float c[4] = {rgba.red, rgba.green, rgba.blue, rgba.alpha};
    for (unsigned k = 0; k < 4; ++k) {
      if (!out[k].objIsEnabled()) return VX_FAIL(VX_RET_ERR_MEM);
      out[k][0] = static_cast<int>(std::lround(c[k] * 255.0f));
    }
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Color::initPublicInterface() {
  VX_setUserError(0);
  VX_Var key(kTable.guid);
  if (!key.objIsEnabled()) return VX_RET_ERR_MEM;
  return VX_classFactoryRegister(key, &publicEntry);
}

VX_RET_STATUS VX_Color::getPublicInterface(const char** guid, VX_PubEntryFunc* entry) {
  VX_setUserError(0);
  if (!guid || !entry) return VX_FAIL(VX_RET_ERR_ARG);
  *guid = kTable.guid;
  *entry = &publicEntry;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Color::classVarOpHandler(VX_CLASS_VAR_OP op, ...) {
  VX_setUserError(0);
  va_list args;
  VX_VA_START(args, op);
  VX_RET_STATUS st = VX_RET_TRUE;
  VX_Version any;
  switch (op) {
    case VX_CLASS_VAR_NEW: {
      void** slot = va_arg(args, void**);
      VX_Color* made = VX_newObject<VX_Color>();
      if (slot) *slot = made;
      st = !slot ? VX_FAIL(VX_RET_ERR_ARG) : made ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
      break;
    }
    case VX_CLASS_VAR_COPY: {
      auto* dst = static_cast<VX_Color*>(va_arg(args, void*));
      auto* src = static_cast<VX_Color*>(va_arg(args, void*));
      // A null source resets the destination to the default colour.
      if (!dst)
        st = VX_FAIL(VX_RET_ERR_ARG);
      else if (src)
        *dst = *src;
      else
        dst->init();
      break;
    }
    case VX_CLASS_VAR_COMP: {
      auto* a = static_cast<VX_Color*>(va_arg(args, void*));
      auto* b = static_cast<VX_Color*>(va_arg(args, void*));
      int* result = va_arg(args, int*);
      if (!a || !b || !result) {
        st = VX_FAIL(VX_RET_ERR_ARG);
        break;
      }
      *result = 0;
      if (*a == *b) break;
      *result = a->model != b->model ? (a->model < b->model ? -1 : 1) : 0;
      for (int k = 0; !*result && k < 4; ++k)
        if (!VX_colorChannelsEqual(a->channel[k], b->channel[k])) *result = a->channel[k] < b->channel[k] ? -1 : 1;
      break;
    }
    case VX_CLASS_VAR_DEL: VX_deleteObject(static_cast<VX_Color*>(va_arg(args, void*))); break;
    case VX_CLASS_VAR_PACKED_SIZE: {
      auto storage = static_cast<VX_STORAGE_TYPE>(va_arg(args, int));
      unsigned* size = va_arg(args, unsigned*);
      if (size)
        *size = storage == VX_STORAGE_BINARY ? VX_COLOR_PACKED_SIZE : 0;
      else
        st = VX_FAIL(VX_RET_ERR_ARG);
      break;
    }
    case VX_CLASS_VAR_PACK: {
      auto* c = static_cast<VX_Color*>(va_arg(args, void*));
      char* buffer = va_arg(args, char*);
      auto storage = static_cast<VX_STORAGE_TYPE>(va_arg(args, int));
      unsigned n = 0;
      st = c ? c->pack(any, buffer, n, storage) : VX_FAIL(VX_RET_ERR_ARG);
      break;
    }
    case VX_CLASS_VAR_UNPACK: {
      auto* c = static_cast<VX_Color*>(va_arg(args, void*));
      char* buffer = va_arg(args, char*);
      unsigned* consumed = va_arg(args, unsigned*);
      auto storage = static_cast<VX_STORAGE_TYPE>(va_arg(args, int));
      unsigned n = 0;
      st = c ? c->unpack(any, buffer, n, storage) : VX_FAIL(VX_RET_ERR_ARG);
      if (consumed) *consumed = n;
      break;
    }
    case VX_CLASS_VAR_PRINT: {
      auto* c = static_cast<VX_Color*>(va_arg(args, void*));
      VX_OStream* stream = va_arg(args, VX_OStream*);
      char* text = nullptr;
      st = c && stream ? c->color2Str(&text) : VX_FAIL(VX_RET_ERR_ARG);
      if (st <= 2) *stream << text;
      VX_free(text);
      break;
    }
    default: st = VX_FAIL(VX_RET_ERR_ARG); break;
  }
  va_end(args);
  return st;
}
