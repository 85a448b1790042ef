#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PropertyListValue.h"
#include "Platform/Foundation/URL.h"

#include <optional>
#include <string>

namespace NS {

/// A folder of code and resources (NSBundle). Safe from any thread.
class Bundle : public Object {
public:
    /// The bundle around the running executable; its folder, when the executable stands in no bundle.
    static Bundle mainBundle();

    std::optional<std::string> bundleIdentifier() const;
    /// The bundle's folder.
    URL bundleURL() const;
    /// A value of the bundle's Info.plist.
    std::optional<PropertyListValue> objectForInfoDictionaryKey(const std::string& key) const;

    using Object::Object;
};

} // namespace NS
