#pragma once

#include "Platform/Foundation/Object.h"

#include <optional>
#include <string>

namespace NS {

/// The address of a resource or of a file (NSURL). It never changes. Safe from any thread.
class URL : public Object {
public:
    /// Absent when the text is no URL; whether an empty one is differs from system to system. Characters that a path or
    /// query cannot hold are percent-encoded first.
    static URL URLWithString(const std::string& text);
    static URL fileURLWithPath(const std::string& path);

    std::string absoluteString() const;
    std::optional<std::string> scheme() const;
    /// Without a trailing slash, percent-decoded: of a file URL, the path for the file system.
    std::string path() const;
    /// What follows the last dot of the last path component, "" when there is none.
    std::string pathExtension() const;

    /// The component goes behind the path, in front of any query. It may hold slashes; whatever else could be taken for
    /// more than a path is percent-encoded, so that the host stays what it is.
    URL URLByAppendingPathComponent(const std::string& component) const;
    URL URLByDeletingLastPathComponent() const;
    /// Of a file URL: the same file without symbolic links on the way; the URL itself when there is no such file.
    URL URLByResolvingSymlinksInPath() const;

    using Object::Object;
};

} // namespace NS
