#include "Desktop/Adapters/MemoryPressure.h"

#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// A tenth of two seconds, in microseconds; two seconds is the least that an ordinary user may ask for.
constexpr const char* threshold = "some 200000 2000000";

} // namespace

MemoryPressure::MemoryPressure(std::function<void()> warn)
    : _file(::open("/proc/pressure/memory", O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (_file < 0 || ::write(_file, threshold, std::strlen(threshold) + 1) < 0) {
        return;
    }
    _notifier = std::make_unique<QSocketNotifier>(_file, QSocketNotifier::Exception);
    QObject::connect(_notifier.get(), &QSocketNotifier::activated, _notifier.get(),
                     [warn = std::move(warn)] { warn(); });
}

MemoryPressure::~MemoryPressure() {
    _notifier.reset();
    if (_file >= 0) {
        ::close(_file);
    }
}
