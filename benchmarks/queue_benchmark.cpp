// What the queue and the form cost the main thread: the real page over a real store, drawn without a graphics driver.
//
// All times are those that the thread worked, so that the pause of the toolkit before each frame is none.

#include "benchmarks/results.h"
#include "tests/desktop/page_fixture.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>

namespace {

using namespace zelkovanta;
using desktop_test::Page;

constexpr int rowCount = 300;
constexpr int visibleRows = 12;
constexpr int heightForVisibleRows = 2200;
constexpr int tries = 31;
constexpr int memberCount = 1000;
constexpr int signalCount = 5000;

double threadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double middle(std::vector<double> times) {
    std::ranges::sort(times);
    return times[times.size() / 2];
}

double ninetyFifth(std::vector<double> times) {
    std::ranges::sort(times);
    return times[times.size() * 95 / 100];
}

class Desk {
public:
    explicit Desk(const records::StateSnapshot& snapshot, int height = 1300) {
        page.computer.launchWith("room", snapshot);
        page.open(420, height);
        QObject::connect(page.window, &QQuickWindow::frameSwapped, page.window, [this] { ++frames_; });
        draw();
    }

    /// Works until the window has been drawn once more.
    void draw() {
        page.window->update();
        for (const int before = frames_; frames_ == before;) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    /// What `work` and the frame after it cost.
    double timed(const std::function<void()>& work) {
        const double begun = threadMilliseconds();
        work();
        for (const int before = frames_; frames_ == before;) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return threadMilliseconds() - begun;
    }

    Page page;

private:
    int frames_ = 0;
};

records::Signal call(int number) {
    return support::makeSignal("call-" + std::to_string(100'000 + number), [](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.requesterId = "june";
        signal.providerId = "dr-voss";
        signal.note = "Second visit, films are on the screen";
    });
}

records::StateSnapshot practiceWith(int signalsInIt, int membersInIt = 0) {
    return desktop_test::practice([&](records::StateSnapshot& snapshot) {
        for (int number = 0; number < signalsInIt; ++number) {
            snapshot.signals.push_back(call(number));
        }
        for (int number = 0; number < membersInIt; ++number) {
            snapshot.members.push_back(support::makeMember("member-" + std::to_string(number)));
        }
    });
}

QQuickItem* listOf(Page& page) {
    return page.rowItems().front()->parentItem()->parentItem();
}

/// The rows of which something can be seen.
int rowsInSight(Page& page) {
    const QQuickItem* const list = listOf(page);
    const QRectF sight = list->mapRectToScene({0, 0, list->width(), list->height()});
    return static_cast<int>(std::ranges::count_if(page.rowItems(), [&](const QQuickItem* row) {
        return sight.intersects(row->mapRectToScene({0, 0, row->width(), row->height()}));
    }));
}

double timeToShow() {
    std::vector<double> times;
    for (int attempt = 0; attempt < 7; ++attempt) {
        Desk desk(practiceWith(0));
        desk.page.computer.socket().accept();
        const auto snapshot = practiceWith(rowCount);
        times.push_back(desk.timed([&] { desk.page.computer.deliverSnapshot(snapshot); }));
        if (desk.page.model->queue()->sent()->count() != rowCount) {
            std::cerr << "The rows did not come.\n";
            std::exit(EXIT_FAILURE);
        }
    }
    return middle(times);
}

double timeOfRowChange() {
    Desk desk(practiceWith(rowCount));
    std::vector<double> times;
    for (int attempt = 0; attempt < tries; ++attempt) {
        auto changed = call(2);
        changed.note = "Change " + std::to_string(attempt);
        times.push_back(desk.timed([&] { desk.page.computer.deliverUpdated(changed); }));
    }
    return middle(times);
}

double timeOfScrolling() {
    Desk desk(practiceWith(rowCount));
    QQuickItem* const list = listOf(desk.page);
    std::vector<double> times;
    for (int frame = 1; frame <= 400; ++frame) {
        times.push_back(desk.timed([&] { list->setProperty("contentY", frame * 40.0); }));
    }
    return ninetyFifth(times);
}

double timeOfTick() {
    Desk desk(practiceWith(visibleRows), heightForVisibleRows);
    if (const int rows = rowsInSight(desk.page); rows != visibleRows) {
        std::cerr << rows << " rows are in sight.\n";
        std::exit(EXIT_FAILURE);
    }
    std::vector<double> times;
    for (int attempt = 0; attempt < tries; ++attempt) {
        desk.page.computer.loop.advance(std::chrono::seconds{1});
        times.push_back(desk.timed([&] { desk.page.model->queue()->sent()->tick(); }));
    }
    return middle(times);
}

std::pair<double, double> timesOfForm() {
    Desk desk(practiceWith(signalCount, memberCount));
    std::vector<double> openings;
    std::vector<double> presses;
    for (int attempt = 0; attempt < 11; ++attempt) {
        openings.push_back(desk.timed([&] { desk.page.model->openCompose(); }));
        auto* const form = desk.page.model->compose();
        for (const int row : {1, 2, 0}) {
            presses.push_back(desk.timed([&] { form->pressWho(row); }));
        }
        form->cancel();
        desk.draw();
    }
    return {middle(openings), middle(presses)};
}

}  // namespace

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::setenv("QSG_RENDER_LOOP", "basic", 1);
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    const QGuiApplication application(argc, argv);
    benchmarks::Results results(argc > 1 ? argv[1] : "");
    results.add("queue.show.300", timeToShow(), "ms");
    results.add("queue.row_change", timeOfRowChange(), "ms");
    results.add("queue.scroll.p95", timeOfScrolling(), "ms");
    results.add("queue.tick", timeOfTick(), "ms");
    const auto [opening, press] = timesOfForm();
    results.add("compose.open", opening, "ms");
    results.add("compose.press", press, "ms");
    return results.write() ? EXIT_SUCCESS : EXIT_FAILURE;
}
