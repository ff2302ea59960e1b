#pragma once

#include "platform/async.h"
#include "records/device_role.h"
#include "screens/queue_row.h"
#include "store/app_store.h"

#include <memory>

/// What the presses on a queue do. Each starts a task on the main thread and returns at once; nobody waits for it, two
/// presses are two tasks, and a failure comes back as the store's `lastError`. Main thread.
namespace zelkovanta::screens {

void press(const std::shared_ptr<store::AppStore>& store, const platform::Executor& main, records::Signal signal,
           RowAction action);

void chooseMemberStatus(const std::shared_ptr<store::AppStore>& store, const platform::Executor& main,
                        records::MemberStatus status);

}  // namespace zelkovanta::screens
