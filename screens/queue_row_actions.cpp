#include "screens/queue_row_actions.h"

#include "platform/task.h"

#include <string>
#include <utility>

namespace zelkovanta::screens {

void press(const std::shared_ptr<store::AppStore>& store, const platform::Executor& main, records::Signal signal,
           RowAction action) {
    platform::startTask(main, [store, signal = std::move(signal), verb = std::string{rawValue(action)}] {
        return store->actOnSignal(signal, verb);
    });
}

void chooseMemberStatus(const std::shared_ptr<store::AppStore>& store, const platform::Executor& main,
                        records::MemberStatus status) {
    platform::startTask(main, [store, status] { return store->setMemberStatus(status); });
}

}  // namespace zelkovanta::screens
