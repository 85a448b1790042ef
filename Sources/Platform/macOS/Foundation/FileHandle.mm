#include "Platform/Foundation/FileHandle.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

FileHandle FileHandle::fileHandleWithNullDevice() {
    return handle<FileHandle>([NSFileHandle fileHandleWithNullDevice]);
}

} // namespace NS
