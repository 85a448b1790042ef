#include "Platform/Foundation/FileHandle.h"

#include "Platform/Linux/Foundation/FileHandleNative.h"

#include <fcntl.h>
#include <memory>

namespace NS {

using namespace Linux;

FileHandle FileHandle::fileHandleWithNullDevice() {
    return handle<FileHandle>(std::make_shared<FileHandleNative>(open("/dev/null", O_RDWR | O_CLOEXEC)));
}

} // namespace NS
