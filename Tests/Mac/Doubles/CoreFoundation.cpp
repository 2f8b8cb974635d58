#include "Tests/Mac/Doubles/CoreFoundation.h"

#include "QuillmereCore/Utf8.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace cf {

namespace {

long live = 0;

}  // namespace

Object::Object(Kind objectKind) : kind(objectKind) {
    ++live;
}

Object::~Object() {
    --live;
    for (const Object* item : items)
        CFRelease(item);
    for (const auto& [key, member] : members)
        CFRelease(member);
}

long liveObjects() {
    return live;
}

Object* make(Kind kind, std::string bytes, double number) {
    auto* object = new Object(kind);
    object->bytes = std::move(bytes);
    object->number = number;
    return object;
}

Object* string(std::string bytes) {
    return make(Kind::string, std::move(bytes));
}

const Object* boolean(bool value) {
    return object(value ? kCFBooleanTrue : kCFBooleanFalse);
}

Object* array(std::vector<const Object*> items) {
    Object* array = make(Kind::array);
    array->items = std::move(items);
    return array;
}

const Object* constant(const std::string& text) {
    // Never destroyed, as they are not: a check for leaks at the end finds them.
    static auto& constants = *new std::map<std::string, Object*>;
    Object*& constant = constants[text];
    if (!constant) {
        constant = string(text);
        constant->isConstant = true;
        --live;
    }
    return constant;
}

Object* object(const void* ref) {
    misuse::stopIf(!ref, "a null object");
    return static_cast<Object*>(const_cast<void*>(ref));
}

Object* object(const void* ref, Kind kind) {
    Object* const found = object(ref);
    misuse::stopIf(found->kind != kind, "an object of another kind");
    return found;
}

}  // namespace cf

using cf::as;
using cf::Kind;
using cf::object;

namespace {

CFBooleanRef makeBoolean(bool value) {
    static cf::Object truth(Kind::boolean);
    static cf::Object falsehood(Kind::boolean);
    cf::Object& constant = value ? truth : falsehood;
    constant.isConstant = true;
    constant.number = value ? 1 : 0;
    return as<CFBooleanRef>(&constant);
}

std::string bytesOf(const UInt8* bytes, CFIndex length) {
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = makeBoolean(true);
const CFBooleanRef kCFBooleanFalse = makeBoolean(false);
const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
const CFArrayCallBacks kCFTypeArrayCallBacks{};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeRef CFRetain(CFTypeRef ref) {
    ++object(ref)->references;
    return ref;
}

void CFRelease(CFTypeRef ref) {
    cf::Object* const released = object(ref);
    if (released->isConstant) return;
    if (--released->references == 0) delete released;
}

CFTypeID CFGetTypeID(CFTypeRef ref) {
    return static_cast<CFTypeID>(object(ref)->kind);
}

Boolean CFEqual(CFTypeRef left, CFTypeRef right) {
    const cf::Object& one = *object(left);
    const cf::Object& other = *object(right);
    if (&one == &other) return true;
    const bool isPlain = one.items.empty() && one.members.empty();
    return one.kind == other.kind && one.bytes == other.bytes && one.number == other.number && isPlain;
}

CFStringRef quillmereConstantString(const char* text) {
    return as<CFStringRef>(cf::constant(text));
}

CFTypeID CFStringGetTypeID(void) {
    return static_cast<CFTypeID>(Kind::string);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length, CFStringEncoding encoding,
                                    Boolean) {
    misuse::stopIf(encoding != kCFStringEncodingUTF8, "an encoding that is not UTF-8");
    std::string text = bytesOf(bytes, length);
    return quillmere::utf8::isWellFormed(text) ? as<CFStringRef>(cf::string(std::move(text))) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) {
    // In UTF-16: what takes four bytes in UTF-8 takes two units.
    const std::string& utf8 = object(string, Kind::string)->bytes;
    return std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; })
           + std::ranges::count_if(utf8, [](char c) { return (c & 0xF8) == 0xF0; });
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8, Boolean, UInt8* buffer,
                         CFIndex capacity, CFIndex* used) {
    const bool isWhole = range.location == 0 && range.length == CFStringGetLength(string);
    misuse::stopIf(!isWhole || encoding != kCFStringEncodingUTF8, "a part of a string, or not as UTF-8");
    const std::string& utf8 = object(string)->bytes;
    const auto size = static_cast<CFIndex>(utf8.size());
    misuse::stopIf(buffer && capacity < size, "a buffer that is too small");
    if (buffer) std::memcpy(buffer, utf8.data(), utf8.size());
    if (used) *used = size;
    return range.length;
}

CFTypeID CFDataGetTypeID(void) {
    return static_cast<CFTypeID>(Kind::data);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    return as<CFDataRef>(cf::make(Kind::data, bytesOf(bytes, length)));
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return reinterpret_cast<const UInt8*>(object(data, Kind::data)->bytes.data());
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(object(data, Kind::data)->bytes.size());
}

CFTypeID CFBooleanGetTypeID(void) {
    return static_cast<CFTypeID>(Kind::boolean);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return object(boolean, Kind::boolean)->number != 0;
}

CFTypeID CFDateGetTypeID(void) {
    return static_cast<CFTypeID>(Kind::date);
}

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime at) {
    return as<CFDateRef>(cf::make(Kind::date, {}, at));
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date) {
    return object(date, Kind::date)->number;
}

CFTypeID CFArrayGetTypeID(void) {
    return static_cast<CFTypeID>(Kind::array);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks* callBacks) {
    misuse::stopIf(callBacks != &kCFTypeArrayCallBacks, "an array that does not retain");
    cf::Object* const array = cf::make(Kind::array);
    for (CFIndex i = 0; i < count; ++i)
        array->items.push_back(object(CFRetain(values[i])));
    return as<CFArrayRef>(array);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(object(array, Kind::array)->items.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    const auto& items = object(array, Kind::array)->items;
    misuse::stopIf(index < 0 || static_cast<std::size_t>(index) >= items.size(), "an index beyond the array");
    return items[static_cast<std::size_t>(index)];
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* forKeys,
                                   const CFDictionaryValueCallBacks* forValues) {
    const bool retains = forKeys == &kCFTypeDictionaryKeyCallBacks && forValues == &kCFTypeDictionaryValueCallBacks;
    misuse::stopIf(!retains, "a dictionary that does not retain");
    cf::Object* const dictionary = cf::make(Kind::dictionary);
    for (CFIndex i = 0; i < count; ++i)
        dictionary->members[object(keys[i], Kind::string)->bytes] = object(CFRetain(values[i]));
    return as<CFDictionaryRef>(dictionary);
}

}  // extern "C"
