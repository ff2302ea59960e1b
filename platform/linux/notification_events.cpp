#include "platform/linux/notification_events.h"

namespace zelkovanta::platform::linux_host::ledger {

namespace {

struct Printer {
    std::ostream& out;

    void operator()(const StartDaemon&) const { out << "start a daemon"; }
    void operator()(const AskCapabilities& command) const { out << "ask " << command.daemon << " what it can do"; }
    void operator()(const Post& command) const {
        out << "post " << command.request->identifier << " to " << command.daemon << " in call " << command.call;
        if (command.replaces != 0) {
            out << " over " << command.replaces;
        }
        if (command.hasDaemonSound) {
            out << " with sound";
        }
    }
    void operator()(const Withdraw& command) const { out << "withdraw " << command.id << " from " << command.daemon; }
    void operator()(const Play& command) const {
        const auto* const file = std::get_if<SoundFile>(&command.sound);
        out << "play " << (file != nullptr ? file->name : "the default sound");
    }
    void operator()(const Complete& command) const { out << "complete " << command.completion; }
    void operator()(const Respond& command) const {
        out << "respond " << command.action << " of " << command.request->identifier;
    }
    void operator()(const Raise& command) const { out << "raise with token '" << command.token << "'"; }
    void operator()(const Keep&) const { out << "keep"; }
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const Command& command) {
    std::visit(Printer{out}, command);
    return out;
}

}  // namespace zelkovanta::platform::linux_host::ledger
