#include "tests/desktop/drawn_items.h"
#include "tests/desktop/page_fixture.h"

#include <string>
#include <vector>

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QRegion>
#include <QRegularExpression>
#include <gtest/gtest.h>

/// How much of the window is painted anew, as the painter itself tells.
namespace zelkovanta::desktop_test {
namespace {

using namespace std::chrono_literals;

/// What is painted of a window while this lives.
class Painted {
public:
    explicit Painted(QQuickWindow* window) {
        current = this;
        QLoggingCategory::setFilterRules(QStringLiteral("qt.scenegraph.softwarecontext.renderer.debug=true"));
        QObject::connect(window, &QQuickWindow::beforeRendering, &watch_, [this] { isPainting_ = true; });
        QObject::connect(window, &QQuickWindow::afterRendering, &watch_, [this] { isPainting_ = false; });
        QObject::connect(window, &QQuickWindow::frameSwapped, &watch_, [this] { ++frames_; });
    }
    ~Painted() {
        qInstallMessageHandler(before_);
        QLoggingCategory::setFilterRules({});
        current = nullptr;
    }
    Painted(const Painted&) = delete;
    Painted& operator=(const Painted&) = delete;

    [[nodiscard]] int frames() const { return frames_; }
    [[nodiscard]] const QRegion& region() const { return region_; }

private:
    static void hear(QtMsgType, const QMessageLogContext&, const QString& message) {
        if (current == nullptr || !current->isPainting_ || !message.startsWith(QLatin1String("render "))) {
            return;
        }
        static const QRegularExpression rectangle(QStringLiteral("(-?\\d+),(-?\\d+) (\\d+)x(\\d+)"));
        static const QRegularExpression bounds(QStringLiteral("bounds=\\([^)]*\\)"));
        for (auto found = rectangle.globalMatch(QString{message}.remove(bounds)); found.hasNext();) {
            const auto match = found.next();
            current->region_ += QRect(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
                                      match.captured(4).toInt());
        }
    }

    static inline Painted* current = nullptr;
    const QtMessageHandler before_ = qInstallMessageHandler(hear);
    QObject watch_;
    bool isPainting_ = false;
    int frames_ = 0;
    QRegion region_;
};

records::Signal call(std::string id, std::string note = "Bring the blue folder") {
    return support::makeSignal(std::move(id), [&](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.note = std::move(note);
        signal.createdAt = "2024-10-04T00:00:00Z";  // The simulated day begins then.
    });
}

class QueueRepaint : public testing::Test {
protected:
    void open(const std::vector<records::Signal>& signals) {
        const auto snapshot = practice([&](records::StateSnapshot& state) { state.signals = signals; });
        page.computer.launchWith("room", snapshot);
        page.open();
        page.computer.socket().accept();
        page.computer.deliverSnapshot(snapshot);
        page.settle();
        // What the pictures of settling have left to paint.
        drawAll();
    }
    /// Lets everything be drawn that waits for it: a frame of a window that was asked last comes last.
    void drawAll() {
        page.computer.settle();
        for (int round = 0; round < 2; ++round) {
            bool isDrawn = false;
            const auto heard = QObject::connect(&fence_, &QQuickWindow::frameSwapped, [&] { isDrawn = true; });
            fence_.resize(50, 50);
            fence_.show();
            fence_.update();
            while (!isDrawn) {
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            }
            QObject::disconnect(heard);
        }
    }
    /// Waits until the page has been painted, and what else waits for it with it.
    void drawPage(const Painted& painted) {
        page.computer.settle();
        const QDeadlineTimer limit(10s);
        while (painted.frames() == 0 && !limit.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        }
        drawAll();
    }
    void tick() {
        page.computer.loop.advance(1s);
        page.model->queue()->sent()->tick();
        page.model->queue()->received()->tick();
        drawAll();
    }

    Page page;

private:
    QQuickWindow fence_;
};

TEST_F(QueueRepaint, aTickPaintsTheTimersAlone) {
    open({call("a"), call("b"), call("c")});
    QRegion timers;
    for (const QQuickItem* timer : shownItemsOfType(page.window->contentItem(), "WaitTimerText")) {
        timers += rectOf(timer).toAlignedRect().adjusted(-1, -1, 1, 1);
    }
    const Painted painted(page.window);
    tick();
    drawPage(painted);
    EXPECT_EQ(painted.frames(), 1);
    EXPECT_FALSE(painted.region().isEmpty());
    EXPECT_TRUE(painted.region().subtracted(timers).isEmpty());
}

TEST_F(QueueRepaint, aChangeOfOneRowPaintsNothingOutsideOfIt) {
    open({call("a"), call("b"), call("c")});
    const QRect row = rectOf(page.rowItem("b")).toAlignedRect();
    const Painted painted(page.window);
    page.computer.deliverUpdated(call("b", "Bring the red folder"));
    drawPage(painted);
    EXPECT_GE(painted.frames(), 1);
    EXPECT_FALSE(painted.region().isEmpty());
    EXPECT_TRUE(row.contains(painted.region().boundingRect()));
}

TEST_F(QueueRepaint, anEmptyListIsNotPaintedAgain) {
    open({});
    const Painted painted(page.window);
    for (int second = 0; second < 5; ++second) {
        tick();
    }
    EXPECT_EQ(painted.frames(), 0);
}

TEST_F(QueueRepaint, aHiddenWindowIsNotPainted) {
    open({call("a"), call("b")});
    page.window->hide();
    drawAll();
    const Painted painted(page.window);
    for (int second = 0; second < 5; ++second) {
        tick();
    }
    page.computer.deliverUpdated(call("b", "Bring the red folder"));
    drawAll();
    EXPECT_EQ(painted.frames(), 0);
}

TEST_F(QueueRepaint, aMinimisedWindowHasNoClock) {
    open({call("a"), call("b")});
    page.window->showMinimized();
    drawAll();
    int clocks = 0;
    for (const QObject* object : page.window->findChildren<QObject*>()) {
        clocks += isOfType(object, "QQmlTimer") && object->property("running").toBool() ? 1 : 0;
    }
    EXPECT_EQ(clocks, 0);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
