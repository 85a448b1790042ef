#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

/// An open file (NSFileHandle), closed with its last handle.
class FileHandle : public Object {
public:
    /// Reads as empty, forgets what is written to it.
    static FileHandle fileHandleWithNullDevice();

    using Object::Object;
};

} // namespace NS
