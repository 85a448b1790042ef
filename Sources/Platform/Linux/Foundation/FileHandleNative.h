#pragma once

#include "Platform/Foundation/FileHandle.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Native.h"

namespace Linux {

struct FileHandleNative : Native {
    explicit FileHandleNative(int number) : descriptor(number) {}

    const Descriptor descriptor;
};

template <>
struct NativeOf<FileHandle> : std::type_identity<FileHandleNative> {};

} // namespace Linux
