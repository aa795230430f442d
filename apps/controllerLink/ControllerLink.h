#pragma once

// How a program reaches the controller of a Remap Color node although it does not link the tool's
// library: through the link, a library of our own that does. The program loads the tool and then
// the link (both with ToolLoader), makes a ControllerPanel and hands it to the controller's
// createWidgetInstanceData; the link, which has installed itself with the controller, puts the
// node's ControllerLink into the panel. User-interface thread.

#include "base/Vector.h"
#include "callbacks/CbDispatcher.h"
#include "pluginAPI/PiUserInterface.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/CoColor.h"
#include "primitives/GeInterval.h"
#include "primitives/GePoint2.h"
#include "primitives/GeVector2.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// File name of the link's library, which lies where tools lie.
inline constexpr char const* controllerLinkFile = "libremapColorLink.so";

/// What a controller tells without being asked.
struct ControllerNotice {
    enum Kind {
        CurveDisplay,
        ChannelDisplay,
        HistoDisplay,
        HistoZoom,
        PlotColor,      ///< with the new colour
        OutputPlotColor ///< with the new colour
    };
    Kind kind;
    CoRgbColorTyped<float> color;
};

/// What became of a pick.
struct PickAnswer {
    enum Outcome {
        Done,
        Failed,
        Overtaken ///< by a later pick, perhaps another panel's, or the node is gone
    };
    std::uint64_t pick; ///< what processSinglePixel gave
    bool isNewest;      ///< this panel has sent no later one
    Outcome outcome;
    CoRgbaColorTyped<float> result; ///< of one that is done
    std::string failure;            ///< of one that failed
};

/// The controller's operations that our programs use; see RemapColorController for what each does.
/// Does not keep the node alive: once it is gone, they throw the null-pointer exception. Lives no
/// longer than the loaded libraries.
class ControllerLink : public RCBase<LkCounter<int>> {
public:
    using Pixel = CoRgbaColorTyped<float>;
    using Color = CoRgbColorTyped<float>;
    using Points = Vector<GePoint2<float>>;
    using NoticeHandler = CbHandler<ControllerNotice const>;
    using PickHandler = CbHandler<PickAnswer const>;

    /// Values of "Mode".
    enum Mode { Linear = 0, ExrDisplay = 1 };
    static constexpr int nbModes = 2;
    static constexpr int nbChannels = 3;
    static constexpr int nbParams = 5;

    /// What a curve editor shows, as it is stored with the node.
    struct Display {
        int curves;
        int channels;
        int histogram;
        double histogramZoom;
    };

    // ---- Names of the node's values. An index outside the ranges is the caller's error. ----

    virtual std::string getModeName(Mode mode) const = 0;
    virtual std::string getModeInputName() const = 0;
    virtual std::string getAdjustInputName() const = 0;
    virtual std::string getClampInputName() const = 0;

    /// Empty for what is not a channel.
    virtual std::string getCurveInputName(int channel) const = 0;
    virtual std::string getParamInputName(Mode mode, int param, int channel) const = 0;

    /// The value that a program changes, through the host, to have that notice told. Empty for
    /// OutputPlotColor, which no value holds.
    virtual std::string getValueName(ControllerNotice::Kind kind) const = 0;
    /// The switch that says whether there is a plot colour.
    virtual std::string getPlotColorEnabledName() const = 0;

    // ---- Curves ----

    /// One channel's curve to its default shape, in the undo command that is open; or all three as
    /// one step of their own.
    virtual void resetCurve(int channel) = 0;
    virtual void resetCurves() = 0;

    /// The transfer of a mode for drawing: `samples` points over the range, or one more; none for
    /// an empty range. Never clamped. A range so narrow, or a number of samples so large, that a
    /// step does not move x throws the assertion failure.
    virtual Points computeCurve(Mode mode, std::array<float, nbParams> const& params,
                                GeInterval<float> const& range, int samples) const = 0;

    /// What a channel's adjustment curve makes of each of `values`: by the tool's own samples of
    /// the curve and lines beyond them, bit for bit as in a picture. A curve without points throws
    /// the assertion failure.
    virtual std::vector<float> mapThroughCurve(Points const& curve,
                                               std::span<float const> values) const = 0;

    // ---- Display state, plot colours and view ----

    virtual Display getDisplay() const = 0;
    virtual bool isPlotColorEnabled() const = 0;
    virtual Color getPlotColor() const = 0;
    virtual void setPlotColor(Color const& color) = 0;
    virtual Color getOutputPlotColor() const = 0;
    virtual void setOutputPlotColor(Color const& color) = 0;
    virtual GeVector2<float> getViewPan() const = 0;
    virtual void setViewPan(GeVector2<float> const& pan) = 0;
    virtual GeVector2<float> getViewZoom() const = 0;
    virtual void setViewZoom(GeVector2<float> const& zoom) = 0;

    /// Subscribes until the handler leaves or dies, or the link goes.
    virtual void addNoticeHandler(NoticeHandler* handler) = 0;

    // ---- Picked pixels ----

    /// Sends a colour through the node's chain, as it is at `time`, on a worker; returns its number
    /// at once. A newer call, of any panel of the node, overtakes the one before it.
    virtual std::uint64_t processSinglePixel(PxTimeContext const& time, Pixel const& colour) = 0;

    /// Told by events what became of this panel's picks, late ones too. Subscribes until the
    /// handler leaves or dies, or the link goes.
    virtual void addPickHandler(PickHandler* handler) = 0;
};

/// The main container of a panel that has no widgets: what the link recognises.
class ControllerPanel : public PiWidget {
public:
    std::string getName() const override { return "_mainContainer"; }

    void setLink(RCShdPtr<ControllerLink> controllerLink) { link = std::move(controllerLink); }

    /// Empty until the controller has been asked for the panel's data.
    RCShdPtr<ControllerLink> const& getLink() const { return link; }

private:
    RCShdPtr<ControllerLink> link;
};
