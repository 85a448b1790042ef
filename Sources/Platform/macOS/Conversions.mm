#include "Platform/macOS/Conversions.h"

#include <cstdint>

namespace NS {

std::shared_ptr<Native> Bridge::retained(id object) {
    if (object == nil) {
        return nullptr;
    }
    return {reinterpret_cast<Native*>(const_cast<void*>((__bridge_retained CFTypeRef)object)),
            [](Native* native) { CFRelease(native); }};
}

} // namespace NS

namespace macOS {

namespace {

NSString* decoded(const std::string& text, NSStringEncoding encoding) {
    return [[NSString alloc] initWithData:toNSData(text) encoding:encoding];
}

PropertyListValue numberValue(NSNumber* number) {
    if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID()) {
        return PropertyListValue(static_cast<bool>([number boolValue]));
    }
    const double real = [number doubleValue];
    const std::int64_t integer = [number longLongValue];
    const bool wraps = static_cast<double>(integer) != real; // a number above all signed ones
    return wraps || CFNumberIsFloatType((__bridge CFNumberRef)number) ? PropertyListValue(real)
                                                                      : PropertyListValue(integer);
}

Array toArray(NSArray* array) {
    Array values;
    forEach(array, [&](id object) { values.push_back(toValue(object)); });
    return values;
}

NSArray* toNSArrayOfValues(const Array& values) {
    NSMutableArray* array = [NSMutableArray arrayWithCapacity:values.size()];
    for (const PropertyListValue& value : values) {
        if (id object = toPropertyList(value)) {
            [array addObject:object];
        }
    }
    return array;
}

} // namespace

// Bytes that are not UTF-8 (a file's name may hold any) read as Latin-1, where every byte is a character.
NSString* toNSString(const std::string& text) {
    NSString* string = decoded(text, NSUTF8StringEncoding);
    return string ? string : decoded(text, NSISOLatin1StringEncoding);
}

// Not UTF8String, which ends at the first NUL and is NULL for half a surrogate pair.
std::string toString(NSString* text) {
    return toBytes([text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES]);
}

std::optional<std::string> toOptionalString(NSString* text) {
    return text ? std::optional(toString(text)) : std::nullopt;
}

NSData* toNSData(const std::string& bytes) {
    return (__bridge_transfer NSData*)CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                                   static_cast<CFIndex>(bytes.size()));
}

std::string toBytes(NSData* data) {
    if (data == nil) { // an error may come without its object, so its text too
        return {};
    }
    std::string bytes([data length], '\0');
    CFDataGetBytes((__bridge CFDataRef)data, {0, static_cast<CFIndex>(bytes.size())},
                   reinterpret_cast<UInt8*>(bytes.data()));
    return bytes;
}

NSArray<NSString*>* toNSArray(const std::vector<std::string>& texts) {
    NSMutableArray<NSString*>* array = [NSMutableArray arrayWithCapacity:texts.size()];
    for (const std::string& text : texts) {
        [array addObject:toNSString(text)];
    }
    return array;
}

id toPropertyList(const PropertyListValue& value) {
    if (const bool* boolean = value.boolean()) {
        return [NSNumber numberWithBool:*boolean];
    }
    if (const double* real = value.real()) {
        return [NSNumber numberWithDouble:*real];
    }
    if (const auto integer = value.integer()) {
        return [NSNumber numberWithLongLong:*integer];
    }
    if (const std::string* text = value.string()) {
        return toNSString(*text);
    }
    if (const Array* array = value.array()) {
        return toNSArrayOfValues(*array);
    }
    const Dictionary* dictionary = value.dictionary();
    return dictionary ? toNSDictionary(*dictionary) : nil;
}

NSDictionary<NSString*, id>* toNSDictionary(const Dictionary& dictionary) {
    NSMutableDictionary<NSString*, id>* result = [NSMutableDictionary dictionaryWithCapacity:dictionary.size()];
    for (const auto& [key, value] : dictionary) {
        if (id object = toPropertyList(value)) {
            [result setObject:object forKey:toNSString(key)];
        }
    }
    return result;
}

PropertyListValue toValue(id propertyList) {
    if ([propertyList isKindOfClass:[NSString class]]) {
        return PropertyListValue(toString(propertyList));
    }
    if ([propertyList isKindOfClass:[NSNumber class]]) {
        return numberValue(propertyList);
    }
    if ([propertyList isKindOfClass:[NSArray class]]) {
        return PropertyListValue(toArray(propertyList));
    }
    if ([propertyList isKindOfClass:[NSDictionary class]]) {
        return PropertyListValue(toDictionary(propertyList));
    }
    return PropertyListValue();
}

Dictionary toDictionary(NSDictionary* dictionary) {
    Dictionary result;
    forEach([dictionary allKeys], [&](id key) {
        if ([key isKindOfClass:[NSString class]]) { // a property list has no others
            result.emplace(toString(key), toValue([dictionary objectForKey:key]));
        }
    });
    return result;
}

Notification toNotification(NSNotification* notification) {
    return {toString([notification name])};
}

Error toError(NSError* error) {
    return {toString([error localizedDescription])};
}

} // namespace macOS
