#pragma once

// A panel with a picture, offscreen, driven by mouse and keys.

#include "editor/view/picture/PicturePanel.h"

#include "base/EvEventManager.h"
#include "support/TestFolder.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

inline constexpr int longestWait = 30000; // milliseconds; no measure of speed

class PanelTest : public testing::Test {
protected:
    PanelTest() : settled(&panel, &PicturePanel::settled)
    {
        EvEventManager::getInstance().setWakeUp([] {
            QMetaObject::invokeMethod(
                qApp, [] { EvEventManager::getInstance().processEvents(); }, Qt::QueuedConnection);
        });
        panel.resize(800, 600);
        panel.show();
    }
    ~PanelTest() noexcept override { EvEventManager::getInstance().setWakeUp({}); }

    void open(std::filesystem::path const& file)
    {
        settle([&] { plate.open(file); });
    }
    void openScene() { open(std::filesystem::path(EXAMPLES) / "scene.exr"); }

    /// Until what it changes is shown; that may be so at once.
    void settle(auto const& change)
    {
        settled.clear();
        change();
        EXPECT_TRUE(settled.count() > 0 || settled.wait(longestWait));
    }

    QPoint onPixel(int x, int y) const
    {
        return widget.toWidget(QPointF(x + 0.5, y + 0.5)).toPoint();
    }
    void drag(Qt::MouseButton button, QPoint from, QPoint to, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(&widget, button, keys, from);
        for (int step = 1; step <= 8; ++step) {
            // QTest's own moves know of no buttons.
            QPointF const place = from + (to - from) * step / 8;
            QMouseEvent event(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton,
                              button, keys);
            QCoreApplication::sendEvent(&widget, &event);
        }
        QTest::mouseRelease(&widget, button, keys, to);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers keys = {})
    {
        QTest::keyClick(&widget, key, keys);
    }
    QImage grab() { return widget.grab().toImage(); }

    TestFolder folder;
    Document document;
    Plate plate{2};
    Picks picks{document, plate};
    PicturePanel panel{document, plate, picks, 2};
    PictureWidget& widget = panel.getPicture();
    QSignalSpy settled;
};
