// A program that is started once or twice: says whether it is the first of its profile, and what it is asked to do.

#include "platform/linux/single_instance.h"

#include <cstdio>
#include <iostream>

#include <QCoreApplication>
#include <QSocketNotifier>

using namespace zelkovanta::platform::linux_host;

int main(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    const auto environment = processEnvironment();
    const auto profile = profileFrom(environment);
    if (!profile) {
        std::cout << profile.error() << std::endl;
        return 2;
    }
    const auto instance = SingleInstance::claim(
        *profile, fileRootsFrom(environment, *profile), environment,
        [](const std::string& token) { std::cout << "activated with '" << token << "'" << std::endl; });
    if (!instance) {
        std::cout << (instance.error().wasAsked ? "asked the first" : "found the first") << std::endl;
        return 1;
    }
    std::cout << "first" << std::endl;
    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
