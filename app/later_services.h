#pragma once

#include "store/collaborators.h"

/// What the store calls and this program does not have yet. Each does nothing, and says nothing that is not so.
namespace zelkovanta::app {

/// Without crash reports no note can get into one.
class NoNoteRegistry final : public store::NoteRegistry {
public:
    void setNotes(std::span<const std::string_view>, std::string_view) override {}
    void addNotesToHistory(std::span<const std::string_view>, std::string_view) override {}
    void retireNotes(std::string_view) override {}
    void clearSendingNotes() override {}
};

/// No crash is captured and none is sent.
class NoCrashSession final : public store::CrashSession {
public:
    void start() override {}
    void setSender(std::string_view, Sender) override {}
    void clearSender() override {}
    platform::Awaitable<void> flush() override { co_return; }
    void writeContext(store::PairedContext) override {}
    void setScreen(std::string_view) override {}
};

/// Releases are heard of and not followed.
class NoUpdateService final : public store::UpdateService {
public:
    void announce(const records::DesktopRelease&) override {}
};

}  // namespace zelkovanta::app
