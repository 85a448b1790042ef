#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/macOS/Conversions.h"

#include <cstdint>
#include <dispatch/dispatch.h>

namespace NS {

using namespace macOS;

DispatchQueue DispatchQueue::main() {
    return handle<DispatchQueue>(dispatch_get_main_queue());
}

DispatchQueue DispatchQueue::global() {
    return handle<DispatchQueue>(dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0));
}

void DispatchQueue::async(std::function<void()> block) const {
    dispatch_async(Bridge::object(*this), ^{
        enter(block);
    });
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> block) const {
    const auto delay = static_cast<std::int64_t>(seconds * static_cast<double>(NSEC_PER_SEC));
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), Bridge::object(*this), ^{
        enter(block);
    });
}

} // namespace NS
