/// \file
/// Colour models, the conversions between them, and the colour object VX_Color, which is also a
/// public class of the component model.
#ifndef VX_COLOR_H
#define VX_COLOR_H

#include "vx_base.h"
#include "vx_public.h"

/// Channels compare equal when they differ by less than this.
constexpr float VX_COLOR_TOLERANCE = 0.001f;
/// An int channel v is the float v * VX_COLOR_INT_SCALE (1/255 as it has always been written).
constexpr float VX_COLOR_INT_SCALE = 0.003921569f;
/// The hue of a colour that has none (grey).
constexpr float VX_COLOR_NO_HUE = 361.0f;

/// Makes the channel structures VX_BaseRGBA, VX_BaseCMYA, VX_BaseYIQA, VX_BaseHSVA and
/// VX_BaseHLSA, each with a derived VX_RGBA, VX_CMYA, VX_YIQA, VX_HSVA and VX_HLSA (the macro is
/// undefined again after use). Each holds four floats in the order named (red, green, blue;
/// cyan, magenta, yellow; Y, I, Q; hue, saturation, value; hue, lightness, saturation), then
/// alpha. The base structure has init() (all zero), set() of the four, and the comparison (each
/// channel within VX_COLOR_TOLERANCE); the derived one adds constructors: all zero, or the four
/// channels. RGB, CMY and alpha run from 0 to 1; hue is in degrees, 0 to below 360, or
/// VX_COLOR_NO_HUE. Nothing is clamped.
#define VX_COLOR_CHANNELS(BASE, NAME, C0, C1, C2, EXTRA)                                       \
  struct VX_API BASE {                                                                         \
    float C0, C1, C2, alpha;                                                                   \
    void init() { C0 = C1 = C2 = alpha = 0.0f; }                                               \
    void set(float c0, float c1, float c2, float a) { C0 = c0, C1 = c1, C2 = c2, alpha = a; } \
    unsigned char operator==(const BASE& o) const {                                            \
      return VX_colorChannelsEqual(C0, o.C0) && VX_colorChannelsEqual(C1, o.C1) &&             \
             VX_colorChannelsEqual(C2, o.C2) && VX_colorChannelsEqual(alpha, o.alpha);         \
    }                                                                                          \
    EXTRA                                                                                      \
  };                                                                                           \
  struct VX_API NAME : BASE {                                                                  \
    NAME() { BASE::init(); }                                                                   \
    NAME(float c0, float c1, float c2, float a) { BASE::set(c0, c1, c2, a); }                  \
    EXTRA_CTOR_##NAME                                                                          \
  };

/// True when two channels differ by less than VX_COLOR_TOLERANCE.
inline bool VX_colorChannelsEqual(float a, float b) {
  float d = a - b;
  return d > -VX_COLOR_TOLERANCE && d < VX_COLOR_TOLERANCE;
}

/// RGBA alone also takes 0-255 integer channels (scaled, not clamped).
#define VX_COLOR_INT_SET                                                                             \
  void set(int r, int g, int b, int a) {                                                             \
    set(r * VX_COLOR_INT_SCALE, g * VX_COLOR_INT_SCALE, b * VX_COLOR_INT_SCALE, a * VX_COLOR_INT_SCALE); \
  }
/// The extra constructors VX_COLOR_CHANNELS gives each derived structure: VX_RGBA alone has
/// one, from 0-255 integer channels; all are undefined again after use.
///@{
#define EXTRA_CTOR_VX_RGBA \
  VX_RGBA(int r, int g, int b, int a) { VX_BaseRGBA::set(r, g, b, a); }
#define EXTRA_CTOR_VX_CMYA
#define EXTRA_CTOR_VX_YIQA
#define EXTRA_CTOR_VX_HSVA
#define EXTRA_CTOR_VX_HLSA
///@}

VX_COLOR_CHANNELS(VX_BaseRGBA, VX_RGBA, red, green, blue, VX_COLOR_INT_SET)
VX_COLOR_CHANNELS(VX_BaseCMYA, VX_CMYA, cyan, magenta, yellow, )
VX_COLOR_CHANNELS(VX_BaseYIQA, VX_YIQA, Y, I, Q, )
VX_COLOR_CHANNELS(VX_BaseHSVA, VX_HSVA, hue, saturation, value, )
VX_COLOR_CHANNELS(VX_BaseHLSA, VX_HLSA, hue, lightness, saturation, )

#undef VX_COLOR_CHANNELS
#undef VX_COLOR_INT_SET
#undef EXTRA_CTOR_VX_RGBA
#undef EXTRA_CTOR_VX_CMYA
#undef EXTRA_CTOR_VX_YIQA
#undef EXTRA_CTOR_VX_HSVA
#undef EXTRA_CTOR_VX_HLSA

/// The conversions that exist; each answers VX_RET_TRUE and copies alpha. The destination may
/// not be the source. RGB and CMY are complements (cyan = 1 - red, and back). RGB to HSV: value
/// is the greatest channel, saturation (greatest - least) / greatest; a colour whose saturation
/// is below VX_COLOR_TOLERANCE (grey, black) gets saturation 0 and hue VX_COLOR_NO_HUE.
///@{
VX_API VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseRGBA& src, VX_BaseCMYA& dst);
VX_API VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseCMYA& src, VX_BaseRGBA& dst);
VX_API VX_RET_STATUS VX_COLOR_CONVERT(const VX_BaseRGBA& src, VX_BaseHSVA& dst);
///@}

/// The model tags of VX_Color.
enum VX_COLOR_MODEL : int {
  VX_COLOR_RGBA = 1,
  VX_COLOR_CMYA = 2,
  VX_COLOR_YIQA = 3,
  VX_COLOR_HSVA = 4,
  VX_COLOR_HLSA = 5
};

/// VX_Color: a colour of any of the five models (the tag) and its four channels, in the order of
/// that model's structure. It owns nothing beyond its public-class texts and cannot fail to be
/// made. Colours of different models never compare equal (nothing is converted). The packed form
/// is the four channels (16 bytes, no tag); the file form is not supported.
///
/// As a public class ("VX_Color", GUID "0F86BBF4-57F4-4d5e-8FC2-44A860AC690F", version "1.0.0")
/// it offers "Set" (function 1: four int arguments R, G, B, A, 0-255, make it an RGBA colour) and
/// "Get" (function 2: the RGBA channels as ints 0-255, rounded; a CMYA colour is converted, the
/// other models cannot be and answer VX_RET_ERR_NSUP). Creation arguments: none (opaque white),
/// or argument 0 = 1 followed by four int channels, or 5 followed by four float channels.
///
/// Text form, written by color2Str and the handler's print, read by str2Color:
///   MODEL "(" number "," number "," number "," number ")"
/// MODEL is one of RGBA, CMYA, YIQA, HSVA, HLSA (upper case, directly followed by "("); numbers
/// are finite decimal floats as strtof reads them (no hexadecimal, infinity or NaN); blanks may
/// stand around the numbers and around the whole text, nothing else. Written numbers have six
/// significant digits: "RGBA(1, 0.5, 0, 1)".
class VX_API VX_Color : public VX_ClassVar, public VX_Persistable, public VX_PublicClass {
 public:
  /// Opaque white: RGBA 1, 1, 1, 1.
  VX_Color();
  /// An RGBA colour with these channels (0 to 1).
  VX_Color(float r, float g, float b, float a);
  /// An RGBA colour from 0-255 channels, scaled by VX_COLOR_INT_SCALE.
  VX_Color(int r, int g, int b, int a);
  /// A colour of the structure's model with its channels as they are (nothing is converted).
  ///@{
  explicit VX_Color(const VX_BaseRGBA& c);
  explicit VX_Color(const VX_BaseCMYA& c);
  explicit VX_Color(const VX_BaseYIQA& c);
  explicit VX_Color(const VX_BaseHSVA& c);
  explicit VX_Color(const VX_BaseHLSA& c);
  ///@}
  ~VX_Color() override;

  /// Always 1: a colour cannot fail to be made.
  unsigned char objIsEnabled() const { return 1; }
  /// Makes it opaque white RGBA.
  void init();
  /// Makes it an RGBA colour with these channels: floats 0 to 1, or ints 0-255 scaled by
  /// VX_COLOR_INT_SCALE (not clamped).
  ///@{
  void set(float r, float g, float b, float a);
  void set(int r, int g, int b, int a);
  ///@}
  /// The model tag, a VX_COLOR_MODEL value.
  int getModel() const { return model; }
  /// Channel `k` (0 to 3) in the order of the model's structure, alpha last; 0 for other `k`.
  float getChannel(unsigned k) const { return k < 4 ? channel[k] : 0.0f; }

  /// Model and channels; the public-class description is not copied.
  VX_Color& operator=(const VX_Color& other);
  /// Equal (unequal): the same model and every channel within VX_COLOR_TOLERANCE; colours of
  /// different models are never equal.
  ///@{
  unsigned char operator==(const VX_Color& other) const;
  unsigned char operator!=(const VX_Color& other) const { return !(*this == other); }
  ///@}

  /// The text form in a malloc'ed block into *out, which the caller frees (VX_free). A null
  /// `out`, or a model tag outside VX_COLOR_MODEL, is VX_RET_ERR_ARG (reported, *out null);
  /// VX_RET_ERR_MEM when the block cannot be had.
  VX_RET_STATUS color2Str(char** out) const;
  /// Reads the text form, model included; a null or malformed text is refused with
  /// VX_RET_ERR_ARG (reported) and changes nothing.
  VX_RET_STATUS str2Color(const char* text);

  /// Packed form: the four channels as little-endian floats, 16 bytes, binary storage only
  /// (other storage: getPackedSize answers 0, pack VX_RET_ERR_ARG). The model tag is not packed.
  ///@{
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  ///@}
  /// Replaces the channels from 16 packed bytes and keeps the model tag. Other storage, or fewer
  /// bytes under a read bound, is VX_RET_ERR_ARG (reported) and changes nothing.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// Not supported: VX_RET_ERR_NIMP (reported), size 0.
  ///@{
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  ///@}

  /// The class's static descriptor table (described above); static data that outlives every
  /// colour.
  static const VX_PubDescTable* getPubDescTable();
  const VX_PubDescTable* getPubObjDescTable() override;
  VX_RET_STATUS publicMesg(VX_PublicObjMesg& msg) override;
  /// The class's entry function: fills `iface` with createPublicObj, deletePublicObj and
  /// invokePublicObj; VX_RET_TRUE.
  static VX_RET_STATUS publicEntry(VX_PubInterface& iface);
  /// A new colour on the library's heap from the creation arguments described above (values
  /// are converted to int or float as needed), to be deleted with deletePublicObj. Null, with a
  /// report, for other arguments or when memory runs out.
  static VX_PublicClass* createPublicObj(VX_Array<VX_PubArg>& args);
  /// Destroys a colour createPublicObj made (the whole object, from its public-class base);
  /// VX_RET_ERR_ARG (reported) for null.
  static VX_RET_STATUS deletePublicObj(VX_PublicClass* obj);
  /// Runs "Set" or "Get" (described above) by function number when `version` is "1.0.0"; the
  /// name and `extra` are not looked at, and any other version or function answers VX_RET_TRUE
  /// without effect. Set needs four input arguments that convert to int, else VX_RET_ERR_ARG
  /// (reported). Get replaces `out` with four unnamed arguments holding the ints. A null object
  /// is VX_RET_ERR_ARG (reported).
  static VX_RET_STATUS invokePublicObj(VX_PublicClass* obj, VX_String& version, VX_String& name, int function,
                                       VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out,
                                       VX_Array<VX_PubArg>& extra);
  /// Registers publicEntry with the class factory under the class GUID and answers the
  /// factory's status (VX_RET_FALSE when the class is registered already).
  static VX_RET_STATUS initPublicInterface();
  /// Stores the class GUID text (static) and publicEntry in the two places; VX_RET_ERR_ARG
  /// (reported) when either is null.
  static VX_RET_STATUS getPublicInterface(const char** guid, VX_PubEntryFunc* entry);
  /// The class-variable handler: colours held by pointer in a VX_Var are created (opaque
  /// white), copied (from a null source: reset to white), compared (model, then channels),
  /// disposed, packed and printed (text form) through it. Unknown operations and null places
  /// are VX_RET_ERR_ARG (reported).
  static VX_RET_STATUS classVarOpHandler(VX_CLASS_VAR_OP op, ...);

 private:
  void assign(int m, float c0, float c1, float c2, float c3);
  /// The RGBA channels of this colour, or VX_RET_ERR_NSUP for a model with no conversion.
  VX_RET_STATUS toRGBA(VX_BaseRGBA& rgba) const;

  int32_t model;
  float channel[4];
};

#endif
