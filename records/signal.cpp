#include "records/signal.h"

namespace zelkovanta::records {

bool isActive(const Signal& signal) {
    return signal.status == signal_status::waiting || signal.status == signal_status::acknowledged;
}

}  // namespace zelkovanta::records
