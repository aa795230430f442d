#pragma once

// The controller of a Remap Color node: what a curve editor needs to know.
//
// Each channel (0 red, 1 green, 2 blue) goes through the transfer of the mode that "Mode" chooses
// and then through an adjustment curve, unless "Adjust" is off. A curve editor draws the mode's
// transfer (RemapColorLinearMode::computeCurve, RemapColorEXRMode::computeCurve), lets the user
// shape the curves in the nodes connected to the inputs of getCurveName, keeps its display choices
// in the node and reads them here, and marks picked colours with processSinglePixel.
//
// An editor gets at the controller like this: its library links this one, installs a maker with
// addInstanceDataFactory (its package depends on InInit<VxInit::remapColorVxtool>, so that it is
// started after the tool and shut down before it), and the host calls createWidgetInstanceData with
// the panel's main container. The maker is then called with the controller; what it returns lives
// as long as the host keeps it with the widget. The controller may die before that: keep the
// reference that the maker got, and beside it the RCWeakPtr<PiNodeController> that
// getNode()->getController() gives; use the reference while a handle locked from it lives. An
// RCWeakPtr<RemapColorController> or a dynamic_cast does not link: the class's type record stays
// inside this library.
//
// Unless a function says otherwise: user-interface thread only; a missing node, value or connection
// throws the host's null-pointer exception naming what is missing.

#include "base/RCShdPtr.h"
#include "base/RCWeakPtr.h"
#include "base/Vector.h"
#include "callbacks/RCMethodCb.h"
#include "internalAPI/PiTypedValueUtil.h"
#include "internalAPI/PiValueChangeInterface.h"
#include "pluginAPI/PiImageModifier.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/CoColor.h"
#include "primitives/GePoint2.h"
#include "primitives/GeVector2.h"
#include "remapColorCallbacks.h"
#include "remapColorExport.h"

#include <array>
#include <string>

namespace RemapColorTool {

enum Channel : int { Red = 0, Green = 1, Blue = 2 };

/// Which curves, which channels and which histogram a curve editor shows. The codes are the curve
/// editor's: the tool keeps them and neither checks nor interprets them.
enum DisplayCurve : int {};
enum DisplayChannel : int {};
enum DisplayHisto : int {};

} // namespace RemapColorTool

class RemapColorController : public PiImageModifier,
                             public PiEventHandlingInterface,
                             public PiValueChangeInterface,
                             public virtual PiNodeController {
public:
    // ---- Construction and the host's calls ----

    class AdjustedCurveScanline;
    class ModeFactory;
    class ModeProcNode;
    class SinglePixelProc;

    static constexpr int nbModes = 2;

    RemapColorController();
    ~RemapColorController() noexcept(false) override;

    /// Binds the stored values (nodeLoaded) and sets everything to its default.
    void nodeCreated() override;

    /// Binds the stored values; changes none.
    void nodeLoaded() override;

    /// Everything to its default: the tool's inputs, the links, the curves (one undoable step,
    /// "Reset Adjusted Curves"), and the curve editor's stored values.
    void reset() override;

    /// Builds source -> one node per mode -> Remap Color node.
    void createModifierProcNode(PxStrongHndl<PxNode const>& result, PiInputNodeBuilder& builder,
                                PxNodePtr<PxImageProtocol const> const& source) override;

    InstanceData createWidgetInstanceData(RCShdPtr<PiWidget> const& widget,
                                          RCShdPtr<PiTimePath const> const& path) override;
    RCStrongPtr<PiEventHandler> createEventHandler(PiViewer& viewer, RCShdPtr<PiNode> const& node,
                                                   RCShdPtr<PiPath> const& path) override;

    /// Turns changes of the curve editor's stored values into notifications.
    void valueChanged(RCShdPtr<PiValue> const& value) override;

    // ---- Names of inputs (any thread) ----

    REMAPCOLOR_EXPORT static std::string getModeInputName();
    REMAPCOLOR_EXPORT static std::string getAdjustEnabledInputName();

    /// The full name of the channel's curve input; empty for what is not a channel.
    REMAPCOLOR_EXPORT static std::string getCurveName(RemapColorTool::Channel channel);

    // ---- Modes ----

    /// Makes `factory` the mode of that index (0 or 1), which is its value of "Mode".
    static void registerModeFactory(RCShdPtr<ModeFactory> const& factory, int index);

    /// The mode of that index; empty before start-up.
    static RCShdPtr<ModeFactory> const& getModeFactory(int index);

    // ---- Adjusted curves ----

    /// Gives the channel's curve its default shape, the identity, in the undo command that is open.
    /// Throws the cast failure if what is connected holds no curve.
    REMAPCOLOR_EXPORT void resetAdjustedCurve(RemapColorTool::Channel channel);

    /// The same for all three channels as one undoable step, "Reset Adjusted Curves".
    REMAPCOLOR_EXPORT void resetAdjustedCurves();

    /// Appends the default shape: the identity line through keys at 0, 0.5 and 1, handles a sixth
    /// away. Three points per key: incoming handle, key, outgoing handle.
    static void fillDefaultCurvePoints(Vector<GePoint2<float>>& points);

    // ---- Display state, saved with the node ----
    // Read only: a curve editor writes these through the host and is told of the change.

    REMAPCOLOR_EXPORT RemapColorTool::DisplayCurve getCurveDisplay();
    REMAPCOLOR_EXPORT RemapColorTool::DisplayChannel getChannelDisplay();
    REMAPCOLOR_EXPORT RemapColorTool::DisplayHisto getHistoDisplay();

    /// Magnification of the histogram, 1 by default.
    REMAPCOLOR_EXPORT double getHistoZoom() const;

    // ---- Plot colours ----

    /// The user's plot colour, saved with the node. Black if less than three numbers are stored.
    REMAPCOLOR_EXPORT CoRgbColorTyped<float> getPlotColor();
    REMAPCOLOR_EXPORT bool isPlotColorEnabled() const;

    /// Stores and enables the plot colour, without an undo record. The host reports the change,
    /// which calls the plot colour's handlers if the colour is a new one.
    REMAPCOLOR_EXPORT void setPlotColor(CoRgbColorTyped<float> const& colour);

    /// The colour that came out for it; kept in memory only.
    REMAPCOLOR_EXPORT CoRgbColorTyped<float> getOutputPlotColor();

    /// Calls the output plot colour's handlers, even for the same colour.
    REMAPCOLOR_EXPORT void setOutputPlotColor(CoRgbColorTyped<float> const& colour);

    // ---- View, kept in memory only; (0, 0) at start; nobody is notified ----

    REMAPCOLOR_EXPORT GeVector2<float> getViewPan();
    REMAPCOLOR_EXPORT void setViewPan(GeVector2<float> const& pan);
    REMAPCOLOR_EXPORT GeVector2<float> getViewZoom();
    REMAPCOLOR_EXPORT void setViewZoom(GeVector2<float> const& zoom);

    // ---- Callbacks ----
    // Handlers are called on the user-interface thread in the order of subscription. A handler
    // leaves when it is removed or destroyed, or when the controller is.

    REMAPCOLOR_EXPORT void addCurveDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const;
    REMAPCOLOR_EXPORT void addChannelDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const;
    REMAPCOLOR_EXPORT void addHistoDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const;
    REMAPCOLOR_EXPORT void addHistoZoomChangedCallback(CbHandler<CbEmptyType>* handler) const;

    using PlotColorHandler = CbHandler<CoRgbColorTyped<float> const>;
    REMAPCOLOR_EXPORT void addPlotColorChangedCallback(PlotColorHandler* handler);
    REMAPCOLOR_EXPORT void removePlotColorChangedCallback(PlotColorHandler* handler);
    REMAPCOLOR_EXPORT void addOutputPlotColorChangedCallback(PlotColorHandler* handler);
    REMAPCOLOR_EXPORT void removeOutputPlotColorChangedCallback(PlotColorHandler* handler);

    using SinglePixelHandler = CbHandler<CoRgbaColorTyped<float>>;
    REMAPCOLOR_EXPORT void addSinglePixelProcessCallback(SinglePixelHandler* handler);
    REMAPCOLOR_EXPORT void removeSinglePixelProcessCallback(SinglePixelHandler* handler);

    // ---- Picked pixels ----

    /// Sends a colour through the chosen mode and the curves, as they are at `time`, on a worker
    /// thread. Returns at once; the result reaches the single-pixel handlers later. A newer call
    /// cancels the one before it. Throws the assertion failure on a worker thread.
    REMAPCOLOR_EXPORT void processSinglePixel(PxTimeContext const& time,
                                              CoRgbaColorTyped<float> const& colour);

    // ---- What a curve editor installs ----

    using EventHandlerFactory = RCStrongPtr<PiEventHandler> (*)(PiViewer&, RCShdPtr<PiNode> const&,
                                                                RCShdPtr<PiPath> const&);
    using InstanceDataFactory = InstanceData (*)(RCShdPtr<PiWidget> const&, RemapColorController&,
                                                 RCShdPtr<PiTimePath const> const&);

    /// Replaces the maker of event handlers; null for none.
    REMAPCOLOR_EXPORT static void setEventHandlerFactory(EventHandlerFactory factory);

    /// Adds a maker of data for the panel's main container. Makers run in the order of adding.
    REMAPCOLOR_EXPORT static void addInstanceDataFactory(InstanceDataFactory factory);

    /// Forgets all makers of instance data.
    static void clearInstanceDataFactories();

    /// The list behind resetAdjustedCurves; filled once at start-up.
    static Vector<GePoint2<float>>& getDefaultCurvePoints();

private:
    using SinglePixelCallback =
        RCMethodCb<RemapColorController, RCWeakPtr, CoRgbaColorTyped<float>>;

    void setPlotColorValue(CoRgbColorTyped<float> const& colour);
    void singlePixelProcessed(CoRgbaColorTyped<float> const& colour);

    CbDispatcher<CoRgbColorTyped<float> const> plotColorChanged;
    CbDispatcher<CoRgbColorTyped<float> const> outputPlotColorChanged;
    // Const operations subscribe to these four.
    mutable CbDispatcher<CbEmptyType> histoZoomChanged;
    mutable CbDispatcher<CbEmptyType> histoDisplayChanged;
    mutable CbDispatcher<CbEmptyType> channelDisplayChanged;
    mutable CbDispatcher<CbEmptyType> curveDisplayChanged;
    PiConstTypedValueUtil<double> histoZoomValue;
    PiConstTypedValueUtil<int> histoDisplayValue;
    PiConstTypedValueUtil<int> channelDisplayValue;
    PiConstTypedValueUtil<int> curveDisplayValue;
    PiConstTypedValueUtil<bool> plotColorEnabledValue;
    PiConstTypedValueArrayUtil<double> plotColorValue;
    GeVector2<float> viewZoom;
    GeVector2<float> viewPan;
    PxStrongHndl<PxNode const> procNode;
    CoRgbColorTyped<float> outputPlotColor;
    CbDispatcher<CoRgbaColorTyped<float>> singlePixelResults;
    SinglePixelProc* pendingRequest = nullptr; // The request manager owns it until it is released.
    RCStrongPtr<SinglePixelCallback> singlePixelCallback;

    static std::array<RCShdPtr<ModeFactory>, nbModes> modeFactories;
};
