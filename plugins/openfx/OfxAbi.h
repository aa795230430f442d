#pragma once

// The binary interface of OpenFX 1.5 as far as this plug-in uses it: types, the suites' layouts and
// strings. The order of a suite's fields is the interface. Handles are pointers to types that are
// never defined, so that the compiler tells them apart. Every string that a host hands over is
// valid until the next call only: copy it at once.

#include <climits>
#include <cstddef>

extern "C" {
struct OfxPropertySet;
struct OfxImageEffect;
struct OfxImageClip;
struct OfxImageMemory;
struct OfxParam;
struct OfxParamSet;
struct OfxMutex;
}

using OfxStatus = int;
using OfxTime = double; // frames

struct OfxRangeD {
    double min;
    double max;
};

struct OfxRectD {
    double x1;
    double y1;
    double x2;
    double y2;
};

/// Half open; y grows upwards.
struct OfxRectI {
    int x1;
    int y1;
    int x2;
    int y2;
};

struct OfxHost {
    OfxPropertySet* host;
    /// Null for a suite that the host does not have.
    void const* (*fetchSuite)(OfxPropertySet* host, char const* suiteName, int suiteVersion);
};

using OfxEntryPoint = OfxStatus (*)(char const* action, void const* handle, OfxPropertySet* inArgs,
                                    OfxPropertySet* outArgs);

struct OfxPlugin {
    char const* pluginApi;
    int apiVersion;
    char const* pluginIdentifier;
    unsigned int pluginVersionMajor;
    unsigned int pluginVersionMinor;
    void (*setHost)(OfxHost* host);
    OfxEntryPoint mainEntry;
};

struct OfxPropertySuite {
    using Set = OfxPropertySet*;
    using Name = char const*;
    OfxStatus (*propSetPointer)(Set, Name, int index, void* value);
    OfxStatus (*propSetString)(Set, Name, int index, char const* value);
    OfxStatus (*propSetDouble)(Set, Name, int index, double value);
    OfxStatus (*propSetInt)(Set, Name, int index, int value);
    OfxStatus (*propSetPointerN)(Set, Name, int count, void* const* values);
    OfxStatus (*propSetStringN)(Set, Name, int count, char const* const* values);
    OfxStatus (*propSetDoubleN)(Set, Name, int count, double const* values);
    OfxStatus (*propSetIntN)(Set, Name, int count, int const* values);
    OfxStatus (*propGetPointer)(Set, Name, int index, void** value);
    OfxStatus (*propGetString)(Set, Name, int index, char** value);
    OfxStatus (*propGetDouble)(Set, Name, int index, double* value);
    OfxStatus (*propGetInt)(Set, Name, int index, int* value);
    OfxStatus (*propGetPointerN)(Set, Name, int count, void** values);
    OfxStatus (*propGetStringN)(Set, Name, int count, char** values);
    OfxStatus (*propGetDoubleN)(Set, Name, int count, double* values);
    OfxStatus (*propGetIntN)(Set, Name, int count, int* values);
    OfxStatus (*propReset)(Set, Name);
    OfxStatus (*propGetDimension)(Set, Name, int* count);
};

struct OfxImageEffectSuite {
    using Effect = OfxImageEffect*;
    OfxStatus (*getPropertySet)(Effect, OfxPropertySet** properties);
    OfxStatus (*getParamSet)(Effect, OfxParamSet** params);
    OfxStatus (*clipDefine)(Effect, char const* name, OfxPropertySet** properties);
    OfxStatus (*clipGetHandle)(Effect, char const* name, OfxImageClip** clip,
                               OfxPropertySet** properties);
    OfxStatus (*clipGetPropertySet)(OfxImageClip*, OfxPropertySet** properties);
    OfxStatus (*clipGetImage)(OfxImageClip*, OfxTime, OfxRectD const* region,
                              OfxPropertySet** image);
    OfxStatus (*clipReleaseImage)(OfxPropertySet* image);
    OfxStatus (*clipGetRegionOfDefinition)(OfxImageClip*, OfxTime, OfxRectD* bounds);
    int (*abort)(Effect); // 0 or 1, no status
    OfxStatus (*imageMemoryAlloc)(Effect, std::size_t nbBytes, OfxImageMemory** memory);
    OfxStatus (*imageMemoryFree)(OfxImageMemory*);
    OfxStatus (*imageMemoryLock)(OfxImageMemory*, void** address);
    OfxStatus (*imageMemoryUnlock)(OfxImageMemory*);
};

/// The variable arguments: `int*`, `double*`, `char**` to get, `int`, `double`, `char const*` to
/// set. Nothing checks them: call through ParamHandle only.
struct OfxParameterSuite {
    using Param = OfxParam*;
    OfxStatus (*paramDefine)(OfxParamSet*, char const* type, char const* name,
                             OfxPropertySet** properties);
    OfxStatus (*paramGetHandle)(OfxParamSet*, char const* name, Param* param,
                                OfxPropertySet** properties);
    OfxStatus (*paramSetGetPropertySet)(OfxParamSet*, OfxPropertySet** properties);
    OfxStatus (*paramGetPropertySet)(Param, OfxPropertySet** properties);
    OfxStatus (*paramGetValue)(Param, ...);
    OfxStatus (*paramGetValueAtTime)(Param, OfxTime, ...);
    OfxStatus (*paramGetDerivative)(Param, OfxTime, ...);
    OfxStatus (*paramGetIntegral)(Param, OfxTime, OfxTime, ...);
    OfxStatus (*paramSetValue)(Param, ...);
    OfxStatus (*paramSetValueAtTime)(Param, OfxTime, ...);
    OfxStatus (*paramGetNumKeys)(Param, unsigned int* count);
    OfxStatus (*paramGetKeyTime)(Param, unsigned int nth, OfxTime* time);
    OfxStatus (*paramGetKeyIndex)(Param, OfxTime, int direction, int* index);
    OfxStatus (*paramDeleteKey)(Param, OfxTime);
    OfxStatus (*paramDeleteAllKeys)(Param);
    OfxStatus (*paramCopy)(Param to, Param from, OfxTime offset, OfxRangeD const* range);
    OfxStatus (*paramEditBegin)(OfxParamSet*, char const* undoLabel);
    OfxStatus (*paramEditEnd)(OfxParamSet*);
};

struct OfxParametricParameterSuite {
    using Param = OfxParam*;
    OfxStatus (*parametricParamGetValue)(Param, int curve, OfxTime, double position, double* value);
    OfxStatus (*parametricParamGetNControlPoints)(Param, int curve, double time, int* count);
    OfxStatus (*parametricParamGetNthControlPoint)(Param, int curve, double time, int nth,
                                                   double* key, double* value);
    OfxStatus (*parametricParamSetNthControlPoint)(Param, int curve, double time, int nth,
                                                   double key, double value, bool addAnimationKey);
    OfxStatus (*parametricParamAddControlPoint)(Param, int curve, double time, double key,
                                                double value, bool addAnimationKey);
    OfxStatus (*parametricParamDeleteControlPoint)(Param, int curve, int nth);
    OfxStatus (*parametricParamDeleteAllControlPoints)(Param, int curve);
};

using OfxThreadFunction = void (*)(unsigned int index, unsigned int count, void* argument);

struct OfxMultiThreadSuite {
    OfxStatus (*multiThread)(OfxThreadFunction, unsigned int nbThreads, void* argument);
    OfxStatus (*multiThreadNumCPUs)(unsigned int* count);
    OfxStatus (*multiThreadIndex)(unsigned int* index);
    int (*multiThreadIsSpawnedThread)(); // 0 or 1, no status
    OfxStatus (*mutexCreate)(OfxMutex**, int nbLocks);
    OfxStatus (*mutexDestroy)(OfxMutex*);
    OfxStatus (*mutexLock)(OfxMutex*);
    OfxStatus (*mutexUnLock)(OfxMutex*);
    OfxStatus (*mutexTryLock)(OfxMutex*);
};

struct OfxMessageSuite {
    using Message = OfxStatus (*)(void* effect, char const* type, char const* id,
                                  char const* format, ...);
    Message message; // version 1 ends here
    Message setPersistentMessage;
    OfxStatus (*clearPersistentMessage)(void* effect);
};

static_assert(sizeof(void*) == 8, "The offsets below are those of a 64-bit system.");
static_assert(sizeof(OfxRangeD) == 16 && sizeof(OfxRectD) == 32 && sizeof(OfxRectI) == 16);
static_assert(sizeof(OfxHost) == 16 && offsetof(OfxHost, fetchSuite) == 8);
static_assert(offsetof(OfxPlugin, apiVersion) == 8);
static_assert(offsetof(OfxPlugin, pluginIdentifier) == 16);
static_assert(offsetof(OfxPlugin, pluginVersionMajor) == 24);
static_assert(offsetof(OfxPlugin, pluginVersionMinor) == 28);
static_assert(offsetof(OfxPlugin, setHost) == 32);
static_assert(offsetof(OfxPlugin, mainEntry) == 40 && sizeof(OfxPlugin) == 48);
// Of suites: how many functions, and places along the way.
static_assert(sizeof(OfxPropertySuite) == 18 * sizeof(void*));
static_assert(offsetof(OfxPropertySuite, propSetPointerN) == 4 * sizeof(void*));
static_assert(offsetof(OfxPropertySuite, propGetPointer) == 8 * sizeof(void*));
static_assert(offsetof(OfxPropertySuite, propGetIntN) == 15 * sizeof(void*));
static_assert(offsetof(OfxPropertySuite, propGetDimension) == 17 * sizeof(void*));
static_assert(sizeof(OfxImageEffectSuite) == 13 * sizeof(void*));
static_assert(offsetof(OfxImageEffectSuite, clipGetImage) == 5 * sizeof(void*));
static_assert(offsetof(OfxImageEffectSuite, clipReleaseImage) == 6 * sizeof(void*));
static_assert(offsetof(OfxImageEffectSuite, abort) == 8 * sizeof(void*));
static_assert(sizeof(OfxParameterSuite) == 18 * sizeof(void*));
static_assert(offsetof(OfxParameterSuite, paramGetValue) == 4 * sizeof(void*));
static_assert(offsetof(OfxParameterSuite, paramSetValue) == 8 * sizeof(void*));
static_assert(offsetof(OfxParameterSuite, paramGetNumKeys) == 10 * sizeof(void*));
static_assert(offsetof(OfxParameterSuite, paramEditBegin) == 16 * sizeof(void*));
static_assert(sizeof(OfxParametricParameterSuite) == 7 * sizeof(void*));
static_assert(offsetof(OfxParametricParameterSuite, parametricParamAddControlPoint) == 32);
static_assert(sizeof(OfxMultiThreadSuite) == 9 * sizeof(void*));
static_assert(offsetof(OfxMultiThreadSuite, multiThreadIsSpawnedThread) == 3 * sizeof(void*));
static_assert(sizeof(OfxMessageSuite) == 3 * sizeof(void*));

/// What calls answer.
namespace OfxStat {
inline constexpr OfxStatus ok = 0;
inline constexpr OfxStatus failed = 1;
inline constexpr OfxStatus missingHostFeature = 4;
inline constexpr OfxStatus unsupported = 5;
inline constexpr OfxStatus memory = 8;
inline constexpr OfxStatus badHandle = 9;
inline constexpr OfxStatus badIndex = 10;
inline constexpr OfxStatus value = 11;
inline constexpr OfxStatus replyDefault = 14;
inline constexpr OfxStatus imageFormat = 1000;
} // namespace OfxStat

/// The strings. `Prop` and the like are left out of the names where nothing else could be meant.
namespace OfxText {
using Text = char const*;

inline constexpr Text apiName = "OfxImageEffectPluginAPI";
inline constexpr int apiVersion = 1;

namespace Suite {
inline constexpr Text property = "OfxPropertySuite";
inline constexpr Text imageEffect = "OfxImageEffectSuite";
inline constexpr Text parameter = "OfxParameterSuite";
inline constexpr Text parametric = "OfxParametricParameterSuite";
inline constexpr Text multiThread = "OfxMultiThreadSuite";
inline constexpr Text message = "OfxMessageSuite";
} // namespace Suite

namespace Action {
inline constexpr Text load = "OfxActionLoad";
inline constexpr Text unload = "OfxActionUnload";
inline constexpr Text describe = "OfxActionDescribe";
inline constexpr Text describeInContext = "OfxImageEffectActionDescribeInContext";
inline constexpr Text createInstance = "OfxActionCreateInstance";
inline constexpr Text destroyInstance = "OfxActionDestroyInstance";
inline constexpr Text instanceChanged = "OfxActionInstanceChanged";
inline constexpr Text getClipPreferences = "OfxImageEffectActionGetClipPreferences";
inline constexpr Text isIdentity = "OfxImageEffectActionIsIdentity";
inline constexpr Text render = "OfxImageEffectActionRender";
inline constexpr Text beginSequenceRender = "OfxImageEffectActionBeginSequenceRender";
inline constexpr Text endSequenceRender = "OfxImageEffectActionEndSequenceRender";
} // namespace Action

namespace Context {
inline constexpr Text filter = "OfxImageEffectContextFilter";
inline constexpr Text general = "OfxImageEffectContextGeneral";
} // namespace Context

namespace Depth {
inline constexpr Text byte = "OfxBitDepthByte";
inline constexpr Text word = "OfxBitDepthShort";
inline constexpr Text half = "OfxBitDepthHalf";
inline constexpr Text single = "OfxBitDepthFloat";
} // namespace Depth

namespace Components {
inline constexpr Text rgba = "OfxImageComponentRGBA";
inline constexpr Text rgb = "OfxImageComponentRGB";
inline constexpr Text alpha = "OfxImageComponentAlpha";
} // namespace Components

namespace Clip {
inline constexpr Text source = "Source";
inline constexpr Text output = "Output";
inline constexpr Text mask = "Mask"; // ours, as is the custom
} // namespace Clip

namespace Type {
inline constexpr Text parameter = "OfxTypeParameter";
} // namespace Type

namespace Reason {
inline constexpr Text userEdited = "OfxChangeUserEdited";
} // namespace Reason

namespace Param {
inline constexpr Text integer = "OfxParamTypeInteger";
inline constexpr Text number = "OfxParamTypeDouble";
inline constexpr Text boolean = "OfxParamTypeBoolean";
inline constexpr Text choice = "OfxParamTypeChoice";
inline constexpr Text string = "OfxParamTypeString";
inline constexpr Text group = "OfxParamTypeGroup";
inline constexpr Text page = "OfxParamTypePage";
inline constexpr Text pushButton = "OfxParamTypePushButton";
inline constexpr Text parametric = "OfxParamTypeParametric";
} // namespace Param

namespace Message {
inline constexpr Text log = "OfxMessageLog";
inline constexpr Text error = "OfxMessageError";
} // namespace Message

namespace Prop {
// Of everything.
inline constexpr Text name = "OfxPropName";
inline constexpr Text type = "OfxPropType";
inline constexpr Text time = "OfxPropTime";
inline constexpr Text label = "OfxPropLabel";
inline constexpr Text shortLabel = "OfxPropShortLabel";
inline constexpr Text longLabel = "OfxPropLongLabel";
inline constexpr Text version = "OfxPropVersion";
inline constexpr Text versionLabel = "OfxPropVersionLabel";
inline constexpr Text pluginDescription = "OfxPropPluginDescription";
inline constexpr Text changeReason = "OfxPropChangeReason";
inline constexpr Text instanceData = "OfxPropInstanceData";

// Of the effect, its clips and its images.
inline constexpr Text grouping = "OfxImageEffectPluginPropGrouping";
inline constexpr Text context = "OfxImageEffectPropContext";
inline constexpr Text supportedContexts = "OfxImageEffectPropSupportedContexts";
inline constexpr Text supportedPixelDepths = "OfxImageEffectPropSupportedPixelDepths";
inline constexpr Text supportedComponents = "OfxImageEffectPropSupportedComponents";
inline constexpr Text renderThreadSafety = "OfxImageEffectPluginRenderThreadSafety";
inline constexpr Text renderFullySafe = "OfxImageEffectRenderFullySafe";
inline constexpr Text hostFrameThreading = "OfxImageEffectPluginPropHostFrameThreading";
inline constexpr Text supportsTiles = "OfxImageEffectPropSupportsTiles";
inline constexpr Text supportsMultiResolution = "OfxImageEffectPropSupportsMultiResolution";
inline constexpr Text temporalClipAccess = "OfxImageEffectPropTemporalClipAccess";
inline constexpr Text multipleClipDepths = "OfxImageEffectPropMultipleClipDepths";
inline constexpr Text multipleClipPars = "OfxImageEffectPropSupportsMultipleClipPARs";
inline constexpr Text singleInstance = "OfxImageEffectPluginPropSingleInstance";
inline constexpr Text fieldRenderTwice = "OfxImageEffectPluginPropFieldRenderTwiceAlways";
inline constexpr Text sequentialRender = "OfxImageEffectInstancePropSequentialRender";
inline constexpr Text clipPreferencesSlaveParam = "OfxImageEffectPropClipPreferencesSlaveParam";
inline constexpr Text noSpatialAwareness = "OfxImageEffectPropNoSpatialAwareness";
inline constexpr Text cpuRender = "OfxImageEffectPropCPURenderSupported";
inline constexpr Text openGlRender = "OfxImageEffectPropOpenGLRenderSupported";
inline constexpr Text pixelDepth = "OfxImageEffectPropPixelDepth";
inline constexpr Text components = "OfxImageEffectPropComponents";
inline constexpr Text renderWindow = "OfxImageEffectPropRenderWindow";
inline constexpr Text clipOptional = "OfxImageClipPropOptional";
inline constexpr Text clipIsMask = "OfxImageClipPropIsMask";
inline constexpr Text clipConnected = "OfxImageClipPropConnected";
inline constexpr Text unmappedPixelDepth = "OfxImageClipPropUnmappedPixelDepth";
inline constexpr Text clipDepthOutput = "OfxImageClipPropDepth_Output";
inline constexpr Text imageData = "OfxImagePropData";
inline constexpr Text imageRowBytes = "OfxImagePropRowBytes";
inline constexpr Text imageBounds = "OfxImagePropBounds";

// Of parameters and of what the host can do with them.
inline constexpr Text hint = "OfxParamPropHint";
inline constexpr Text scriptName = "OfxParamPropScriptName";
inline constexpr Text parent = "OfxParamPropParent";
inline constexpr Text secret = "OfxParamPropSecret";
inline constexpr Text defaultValue = "OfxParamPropDefault";
inline constexpr Text animates = "OfxParamPropAnimates";
inline constexpr Text persistent = "OfxParamPropPersistant"; // so spelled
inline constexpr Text evaluateOnChange = "OfxParamPropEvaluateOnChange";
inline constexpr Text minimum = "OfxParamPropMin";
inline constexpr Text maximum = "OfxParamPropMax";
inline constexpr Text displayMinimum = "OfxParamPropDisplayMin";
inline constexpr Text displayMaximum = "OfxParamPropDisplayMax";
inline constexpr Text increment = "OfxParamPropIncrement";
inline constexpr Text digits = "OfxParamPropDigits";
inline constexpr Text doubleType = "OfxParamPropDoubleType";
inline constexpr Text doubleTypePlain = "OfxParamDoubleTypePlain";
inline constexpr Text dimensionLabel = "OfxParamPropDimensionLabel";
inline constexpr Text choiceOption = "OfxParamPropChoiceOption";
inline constexpr Text stringMode = "OfxParamPropStringMode";
inline constexpr Text stringIsMultiLine = "OfxParamStringIsMultiLine";
inline constexpr Text groupOpen = "OfxParamPropGroupOpen";
inline constexpr Text pageChild = "OfxParamPropPageChild";
inline constexpr Text parametricDimension = "OfxParamPropParametricDimension";
inline constexpr Text parametricUiColour = "OfxParamPropParametricUIColour";
inline constexpr Text parametricRange = "OfxParamPropParametricRange";
inline constexpr Text hostAnimatesBooleans = "OfxParamHostPropSupportsBooleanAnimation";
inline constexpr Text hostMaxPages = "OfxParamHostPropMaxPages";
} // namespace Prop
} // namespace OfxText
