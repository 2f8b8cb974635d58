#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <map>
#include <string>
#include <vector>

/// A Core Foundation of counted objects, for the tests.
namespace cf {

enum class Kind : CFTypeID { string = 1, data, boolean, date, array, dictionary, port, source, inputSource, image };

/// Every object is one of these; what its kind does not need stays empty.
struct Object {
    explicit Object(Kind objectKind);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    Kind kind;
    long references = 1;
    bool isConstant = false;
    std::string bytes;                             ///< string (UTF-8), data, image
    double number = 0;                             ///< date, boolean; an input source's place in the list
    std::vector<const Object*> items;              ///< array: retained
    std::map<std::string, const Object*> members;  ///< dictionary, input source: retained
};

/// Objects that somebody still owes a release; constants do not count.
long liveObjects();

Object* make(Kind kind, std::string bytes = {}, double number = 0);
Object* string(std::string bytes);
const Object* boolean(bool value);
/// Takes over a reference to each of the items.
Object* array(std::vector<const Object*> items);
/// The one object for this text that is never freed.
const Object* constant(const std::string& text);

/// From the double to what the system's functions take, and back.
template <class Ref>
Ref as(const Object* object) {
    return reinterpret_cast<Ref>(const_cast<Object*>(object));
}
Object* object(const void* ref);
/// The same; ends the program when the object is of another kind.
Object* object(const void* ref, Kind kind);

}  // namespace cf
