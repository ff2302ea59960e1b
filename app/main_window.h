#pragma once

#include "platform/appearance.h"
#include "screens/qml/page_model.h"
#include "store/collaborators.h"

#include <memory>

#include <QPointer>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QString>

namespace zelkovanta::app {

/// The window. Made when it is first shown; closing it hides it, and the program goes on.
class MainWindow final : public store::MainWindow {
public:
    MainWindow() = default;
    ~MainWindow() override;
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    /// What the window shows, and how; before the first `show`, and both must outlive the window.
    void setPage(screens::qml::PageModel& page, platform::Appearance& appearance) {
        page_ = &page;
        appearance_ = &appearance;
    }

    /// Shows the window without taking the focus from what the person is doing. Ends the program if there is no screen
    /// to show it on.
    void show() override;
    /// The window and what it is made of are gone; it is not shown again.
    void close() { engine_.reset(); }
    /// In answer to the person: shows the window above the others. The token is the desktop's leave to do so, empty
    /// where there is none.
    void bringForward(const QString& activationToken);

private:
    void make();

    screens::qml::PageModel* page_ = nullptr;
    platform::Appearance* appearance_ = nullptr;
    std::unique_ptr<QQmlApplicationEngine> engine_;
    QPointer<QQuickWindow> window_;
};

}  // namespace zelkovanta::app
