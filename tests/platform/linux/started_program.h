#pragma once

#include "tests/platform/linux/qt_loop.h"

#include <string>

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {

/// A start of the program in `second_start.cpp`.
class StartedProgram {
public:
    /// With one variable more, if one is named.
    explicit StartedProgram(const QString& variable = {}, const QString& value = {}) {
        auto environment = QProcessEnvironment::systemEnvironment();
        if (!variable.isEmpty()) {
            environment.insert(variable, value);
        }
        process_.setProcessEnvironment(environment);
        process_.start(QCoreApplication::applicationDirPath() + QStringLiteral("/platform_linux_second_start"), {});
        EXPECT_TRUE(process_.waitForStarted());
    }
    ~StartedProgram() { end(); }
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    /// The next line that it writes.
    std::string line() {
        EXPECT_TRUE(runUntil([this] { return process_.canReadLine() || process_.state() == QProcess::NotRunning; }));
        return process_.readLine().trimmed().toStdString();
    }
    void end() {
        process_.closeWriteChannel();
        EXPECT_TRUE(process_.state() == QProcess::NotRunning || process_.waitForFinished());
    }
    void crash() {
        process_.kill();
        process_.waitForFinished();
    }

private:
    QProcess process_;
};

}  // namespace zelkovanta::platform::linux_host
