#include "Platform/Foundation/FileManager.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

FileManager FileManager::defaultManager() {
    return handle<FileManager>([NSFileManager defaultManager]);
}

URL FileManager::temporaryDirectory() const {
    return handle<URL>([object<NSFileManager>(*this) temporaryDirectory]);
}

bool FileManager::fileExistsAtPath(const std::string& path) const {
    return [object<NSFileManager>(*this) fileExistsAtPath:toNSString(path)];
}

bool FileManager::isWritableFileAtPath(const std::string& path) const {
    return [object<NSFileManager>(*this) isWritableFileAtPath:toNSString(path)];
}

std::optional<std::string> FileManager::destinationOfSymbolicLinkAtPath(const std::string& path) const {
    return toOptionalString([object<NSFileManager>(*this) destinationOfSymbolicLinkAtPath:toNSString(path) error:nil]);
}

bool FileManager::removeItemAtURL(const URL& url) const {
    return [object<NSFileManager>(*this) removeItemAtURL:object<NSURL>(url) error:nil];
}

bool FileManager::moveItemAtURL(const URL& source, const URL& destination) const {
    return [object<NSFileManager>(*this) moveItemAtURL:object<NSURL>(source)
                                                 toURL:object<NSURL>(destination)
                                                 error:nil];
}

bool FileManager::createDirectoryAtURL(const URL& url, bool withIntermediateDirectories) const {
    return [object<NSFileManager>(*this) createDirectoryAtURL:object<NSURL>(url)
                                  withIntermediateDirectories:withIntermediateDirectories
                                                   attributes:nil
                                                        error:nil];
}

bool FileManager::setAttributes(const FileAttributes& attributes, const std::string& path) const {
    NSMutableDictionary<NSFileAttributeKey, id>* dictionary = [NSMutableDictionary dictionaryWithCapacity:1];
    [dictionary setObject:[NSNumber numberWithUnsignedInt:attributes.posixPermissions] forKey:NSFilePosixPermissions];
    return [object<NSFileManager>(*this) setAttributes:dictionary ofItemAtPath:toNSString(path) error:nil];
}

bool writeToURL(const std::string& text, const URL& url) {
    return [toNSString(text) writeToURL:object<NSURL>(url) atomically:YES encoding:NSUTF8StringEncoding error:nil];
}

} // namespace NS
