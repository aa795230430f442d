// The table of parameters, by mouse and keys.

#include "editor/view/parameters/ParameterPanel.h"

#include "editor/model/parameters/PanelLayout.h"
#include "editor/view/parameters/RowLabel.h"
#include "editor/view/time/KeyButton.h"

#include <QCheckBox>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>
#include <gtest/gtest.h>

namespace {

class ParameterPanelTest : public testing::Test {
protected:
    ParameterPanelTest()
    {
        panel.show();
        panel.activateWindow();
        constexpr int longestWait = 30000; // milliseconds; no measure of speed
        EXPECT_TRUE(QTest::qWaitForWindowActive(&panel, longestWait));
    }

    NumberField& field(char const* name) { return *panel.findField(name); }
    void enter(char const* name, char const* text)
    {
        field(name).setFocus();
        field(name).selectAll();
        QTest::keyClicks(&field(name), text);
        QTest::keyClick(&field(name), Qt::Key_Return);
    }
    void turn(NumberField& number)
    {
        QPointF const place(5, 5);
        QWheelEvent event(place, number.mapToGlobal(place), {}, {0, 120}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&number, &event);
    }
    template <typename Widget>
    Widget& findNamed(QString const& name)
    {
        for (auto* const widget : panel.findChildren<Widget*>()) {
            if (widget->accessibleName() == name) {
                return *widget;
            }
        }
        throw std::runtime_error("there is no " + name.toStdString());
    }
    /// Red, green, blue.
    std::vector<double> gammas()
    {
        std::vector<double> numbers;
        for (char const* const channel : {"Red", "Green", "Blue"}) {
            numbers.push_back(document.getNumber(std::string("Linear.Gamma.") + channel));
        }
        return numbers;
    }
    std::size_t countSteps() { return document.getHistory().getNbCommands(); }

    Document document;
    ParameterPanel panel{document, listParameters(document)};
};

using Numbers = std::vector<double>;

} // namespace

TEST_F(ParameterPanelTest, LinkedChannelsAreSetTogetherAndResetInOneStep)
{
    enter("Linear.Gamma.Green", "1.1*2");
    EXPECT_EQ(gammas(), (Numbers{2.2, 2.2, 2.2}));
    QTest::mouseClick(&findNamed<QCheckBox>("Link the channels of Gamma"), Qt::LeftButton);
    enter("Linear.Gamma.Green", "3");
    EXPECT_EQ(gammas(), (Numbers{2.2, 3.0, 2.2}));
    std::size_t const before = countSteps();
    for (auto* const label : panel.findChildren<RowLabel*>()) {
        if (label->text() == "Gamma" && label->isVisible()) {
            QTest::mouseDClick(label, Qt::LeftButton);
        }
    }
    EXPECT_EQ(gammas(), (Numbers{1.0, 1.0, 1.0}));
    EXPECT_EQ(countSteps(), before + 1);
}

TEST_F(ParameterPanelTest, DoubleClickOnAFieldResetsWhatItSets)
{
    enter("Linear.Gamma.Red", "2");
    QTest::mouseClick(&findNamed<QCheckBox>("Link the channels of Gamma"), Qt::LeftButton);
    QTest::mouseDClick(&field("Linear.Gamma.Green"), Qt::LeftButton);
    EXPECT_EQ(gammas(), (Numbers{2.0, 1.0, 2.0}));
    QTest::mouseClick(&findNamed<QCheckBox>("Link the channels of Gamma"), Qt::LeftButton);
    QTest::mouseDClick(&field("Linear.Gamma.Red"), Qt::LeftButton);
    EXPECT_EQ(gammas(), (Numbers{1.0, 1.0, 1.0}));
    EXPECT_EQ(document.getHistory().getUndoLabel(), "Reset Linear.Gamma");
}

TEST_F(ParameterPanelTest, RefusalNamesTheInputThatWasTypedInto)
{
    document.setNumbers("", {"Mode"}, 1);
    for (char const* const name :
         {"EXRDisplay.Defog.Red", "EXRDisplay.Defog.Green", "EXRDisplay.Defog.Blue"}) {
        enter(name, "-1");
        EXPECT_TRUE(field(name).toolTip().contains(name)) << field(name).toolTip().toStdString();
        EXPECT_EQ(document.getNumber(name), 0.0);
    }
}

TEST_F(ParameterPanelTest, WheelTurnsOnlyWhatHasTheFocusAndRangesAreKept)
{
    NumberField& mix = field("Mix");
    NumberField& gamma = field("Linear.Gamma.Red");
    mix.setFocus();
    turn(gamma);
    EXPECT_EQ(gammas(), (Numbers{1.0, 1.0, 1.0}));
    gamma.setFocus();
    turn(gamma);
    EXPECT_GT(gammas()[0], 1.0);
    turn(mix);
    enter("Mix", "1.5");
    EXPECT_EQ(document.getNumber("Mix"), 1.0);
    EXPECT_TRUE(mix.toolTip().contains("0 to 1")) << mix.toolTip().toStdString();
    EXPECT_EQ(QToolTip::text(), mix.toolTip()) << "seen without a cursor";
    QTest::keyClick(&mix, Qt::Key_Escape);
    EXPECT_EQ(mix.text(), "1");
    EXPECT_EQ(mix.toolTip(), "Mix") << "as before";
}

TEST_F(ParameterPanelTest, ModeSaysWhatIsShownAndADiamondSetsAKey)
{
    struct Case {
        int mode;
        bool isLinear;
    };
    for (auto const& [mode, isLinear] : {Case{1, false}, Case{0, true}}) {
        document.setNumbers("", {"Mode"}, mode);
        EXPECT_EQ(field("Linear.Gamma.Red").isVisible(), isLinear);
        EXPECT_EQ(field("EXRDisplay.Gamma.Red").isVisible(), !isLinear);
        EXPECT_TRUE(field("Mix").isVisible());
    }
    Keys const keys(document);
    for (std::size_t const nbKeys : {1, 0}) {
        QTest::mouseClick(&findNamed<KeyButton>("Key of Mix"), Qt::LeftButton);
        EXPECT_EQ(keys.list({"Mix"}).size(), nbKeys);
    }
}
