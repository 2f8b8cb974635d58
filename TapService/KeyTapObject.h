#pragma once

#include "TapService/GrantStore.h"
#include "TapService/Handles.h"
#include "TapService/Sessions.h"
#include "TapService/TapServer.h"

#include <list>
#include <memory>
#include <string>

namespace quillmere::tap {

/// The service's face on the bus: who may have a tap, and handing it out.
/// Nothing here waits: a bus or a polkit that hangs must not hold up a
/// keyboard.
class KeyTapObject {
public:
    static constexpr const char* name = "org.quillmere.KeyTap1";
    static constexpr const char* path = "/org/quillmere/KeyTap1";
    static constexpr const char* interface = "org.quillmere.KeyTap1";
    static constexpr const char* action = "org.quillmere.KeyTap1.grant";

    KeyTapObject(sd_bus* bus, GrantStore& grants, Sessions& sessions, TapServer& server)
        : bus_(bus), grants_(grants), sessions_(sessions), server_(server) {}

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
    GrantStore& grants_;
    Sessions& sessions_;
    TapServer& server_;
    BusSlot slot_;
    std::list<Request> requests_;
    unsigned int cancellations_ = 0;
};

}  // namespace quillmere::tap
