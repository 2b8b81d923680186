#include "platform/SemaphoreSet.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>

namespace platform {

bool SemaphoreSet::takeBefore(WaitLimit::Clock::time_point deadline, int member) const {
  using std::chrono::nanoseconds;
  sembuf operation{};
  operation.sem_num = static_cast<unsigned short>(member);
  operation.sem_op = -1;
  operation.sem_flg = SEM_UNDO;
  do {
    const auto left = std::max<nanoseconds>(deadline - WaitLimit::Clock::now(), nanoseconds::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout{seconds.count(), (left - seconds).count()};
    if (::semtimedop(id_, &operation, 1, &timeout) == 0) return true;
  } while (errno == EINTR);
  return false;
}

}  // namespace platform
