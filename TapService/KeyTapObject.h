#pragma once

#include "TapService/CallerBudgets.h"
#include "TapService/Handles.h"
#include "TapService/TapAccess.h"

#include <list>
#include <set>
#include <string>

namespace quillmere::tap {

/// The service's face on the bus: who may have a tap, and handing it out.
/// Nothing here waits: a bus or a polkit that hangs must not hold up a
/// keyboard. And every call costs the same, little, however many came before
/// it: one user's calls must not hold up another's.
class KeyTapObject {
public:
    KeyTapObject(sd_bus* bus, TapAccess& access) : bus_(bus), access_(access) {}

    /// Exports the object and takes the name; false when either is refused.
    bool start();

    /// Whether somebody waits for an answer.
    bool isBusy() const { return !requests_.empty(); }

    enum class Method { hasAccess, requestAccess, revokeAccess, openTap };

private:
    /// A call on its way: first the bus says who calls, then polkit may have
    /// to ask.
    struct Request {
        KeyTapObject* object;
        std::list<Request>::iterator self;
        Method method;
        BusMessage call;
        std::string sender;
        uid_t user = 0;
        pid_t process = 0;
        bool asksUser = false;
        std::string cancellation;
        BusSlot answer;
        BusSlot departure;
    };

    static int gate(sd_bus_message* message, void* object, sd_bus_error* error);
    template <Method method>
    static int receive(sd_bus_message* call, void* object, sd_bus_error* error);
    static int version(sd_bus* bus, const char* path, const char* interface, const char* property,
                       sd_bus_message* reply, void* object, sd_bus_error* error);
    static const sd_bus_vtable vtable[];

    int begin(Method method, sd_bus_message* call);
    static int callerKnown(sd_bus_message* reply, void* request, sd_bus_error* error);
    static bool readCaller(sd_bus_message* reply, Request& request);
    void proceed(Request& request);
    void answerOpenTap(Request& request);
    void askUser(Request& request);
    static int userAnswered(sd_bus_message* reply, void* request, sd_bus_error* error);
    static int callerLeft(sd_bus_message* signal, void* request, sd_bus_error* error);
    void cancel(Request& request);

    void answer(Request& request, bool value);
    void answerError(Request& request, const char* error, const char* message);
    void finish(Request& request);

    sd_bus* bus_;
    TapAccess& access_;
    BusSlot gate_;
    BusSlot slot_;
    CallerBudgets callers_;
    std::list<Request> requests_;
    std::set<uid_t> asked_;  ///< who sits in front of a dialog
    unsigned int cancellations_ = 0;
};

}  // namespace quillmere::tap
