#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/URL.h"

#include <optional>
#include <string>

namespace NS {

/// Of a file or folder (NSFileAttributeKey).
struct FileAttributes {
    unsigned posixPermissions = 0;
};

/// The file system (NSFileManager). An operation says whether it was carried out. Safe from any thread.
class FileManager : public Object {
public:
    static FileManager defaultManager();

    /// The user's own: nobody else can write there.
    URL temporaryDirectory() const;

    /// Follows symbolic links.
    bool fileExistsAtPath(const std::string& path) const;
    /// For this process.
    bool isWritableFileAtPath(const std::string& path) const;

    /// Nothing when no symbolic link stands there.
    std::optional<std::string> destinationOfSymbolicLinkAtPath(const std::string& path) const;

    /// A folder with all that is in it; a symbolic link itself.
    bool removeItemAtURL(const URL& url) const;
    /// To another volume too. Refused when something stands at the destination.
    bool moveItemAtURL(const URL& source, const URL& destination) const;
    /// With intermediates, a folder that is there already is fine.
    bool createDirectoryAtURL(const URL& url, bool withIntermediateDirectories) const;
    bool setAttributes(const FileAttributes& attributes, const std::string& path) const;

    using Object::Object;
};

/// The text as a file in UTF-8, atomically: what stood there, or all of the text. Whether it was written. Safe from
/// any thread (NSString writeToURL:atomically:encoding:error:).
bool writeToURL(const std::string& text, const URL& url);

} // namespace NS
