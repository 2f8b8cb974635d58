#include "TapService/KeyTapObject.h"

#include "TapService/BusOwner.h"
#include "TapService/Clock.h"
#include "TapService/KeyTapNames.h"
#include "TapService/Log.h"

#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

namespace quillmere::tap {

namespace {

using namespace KeyTapNames::Error;

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* authority = "org.freedesktop.PolicyKit1";
constexpr const char* authorityPath = "/org/freedesktop/PolicyKit1/Authority";
constexpr const char* authorityInterface = "org.freedesktop.PolicyKit1.Authority";

// CheckAuthorizationFlags of polkit: the user may be asked.
constexpr std::uint32_t allowUserInteraction = 1;
// A password may take its time; a dialog that nobody answers must end.
constexpr std::uint64_t longestDialog = 10ULL * 60 * 1'000'000;

}  // namespace

const sd_bus_vtable KeyTapObject::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("HasAccess", "", "b", &KeyTapObject::receive<Method::hasAccess>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RequestAccess", "", "b", &KeyTapObject::receive<Method::requestAccess>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RevokeAccess", "", "", &KeyTapObject::receive<Method::revokeAccess>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("OpenTap", "", "h", &KeyTapObject::receive<Method::openTap>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Version", "u", &KeyTapObject::version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

bool KeyTapObject::start() {
    sd_bus_slot* slot = nullptr;
    int status = sd_bus_add_filter(bus_, &slot, &KeyTapObject::gate, this);
    gate_.reset(slot);
    slot = nullptr;
    if (status >= 0)
        status = sd_bus_add_object_vtable(bus_, &slot, KeyTapNames::path, KeyTapNames::interface, vtable, this);
    slot_.reset(slot);
    // The one call that waits: no keyboard is open yet.
    if (status >= 0) status = sd_bus_request_name(bus_, KeyTapNames::service, 0);
    if (status < 0) Log::error("Cannot take the name org.quillmere.KeyTap1 on the bus", status);
    return status >= 0;
}

int KeyTapObject::version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "u", std::uint32_t{tap::version});
}

int KeyTapObject::gate(sd_bus_message* message, void* object, sd_bus_error*) {
    const char* sender = sd_bus_message_get_sender(message);
    if (sender == nullptr || sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
    // Not even an error for who calls too often: the bus refuses further calls
    // of a program with too many that were not answered, and so keeps them
    // away from here.
    return static_cast<KeyTapObject*>(object)->callers_.spend(sender, monotonicNow()) ? 0 : 1;
}

template <KeyTapObject::Method method>
int KeyTapObject::receive(sd_bus_message* call, void* object, sd_bus_error*) {
    return static_cast<KeyTapObject*>(object)->begin(method, call);
}

int KeyTapObject::begin(Method method, sd_bus_message* call) {
    const char* sender = sd_bus_message_get_sender(call);
    if (sender == nullptr) return -EBADMSG;
    Request& request = requests_.emplace_back();
    request.object = this;
    request.self = std::prev(requests_.end());
    request.method = method;
    request.call.reset(sd_bus_message_ref(call));
    request.sender = sender;
    // What the bus knows for certain, because it was told by the kernel.
    sd_bus_slot* slot = nullptr;
    const int status = sd_bus_call_method_async(bus_, &slot, busName, busPath, busName, "GetConnectionCredentials",
                                                &KeyTapObject::callerKnown, &request, "s", sender);
    request.answer.reset(slot);
    if (status < 0) answerError(request, failed, "The bus does not say who calls");
    return 1;
}

int KeyTapObject::callerKnown(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
    KeyTapObject& object = *request.object;
    if (sd_bus_message_is_method_error(reply, nullptr) != 0 || !readCaller(reply, request)) {
        object.answerError(request, failed, "The bus does not say who calls");
    } else {
        object.proceed(request);
    }
    return 0;
}

bool KeyTapObject::readCaller(sd_bus_message* reply, Request& request) {
    std::optional<std::uint32_t> user;
    std::optional<std::uint32_t> process;
    if (sd_bus_message_enter_container(reply, 'a', "{sv}") < 0) return false;
    while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(reply, "s", &key) < 0) return false;
        const std::string_view name(key);
        std::uint32_t value = 0;
        if (name != "UnixUserID" && name != "ProcessID") {
            if (sd_bus_message_skip(reply, "v") < 0) return false;
        } else if (sd_bus_message_read(reply, "v", "u", &value) < 0) {
            return false;
        } else {
            (name == "UnixUserID" ? user : process) = value;
        }
        if (sd_bus_message_exit_container(reply) < 0) return false;
    }
    if (!user || !process) return false;
    request.user = *user;
    request.process = static_cast<pid_t>(*process);
    return true;
}

void KeyTapObject::proceed(Request& request) {
    switch (request.method) {
        case Method::hasAccess:
            answer(request, access_.has(request.user));
            return;
        case Method::requestAccess:
            if (access_.has(request.user)) {
                answer(request, true);
            } else {
                askUser(request);
            }
            return;
        case Method::revokeAccess:
            access_.revoke(request.user);
            sd_bus_reply_method_return(request.call.get(), "");
            finish(request);
            return;
        case Method::openTap:
            answerOpenTap(request);
            return;
    }
}

void KeyTapObject::answerOpenTap(Request& request) {
    const auto program = access_.open(request.user, request.process);
    if (!program) {
        answerError(request, program.error().error, program.error().message);
        return;
    }
    // The message keeps a duplicate.
    sd_bus_reply_method_return(request.call.get(), "h", program->get());
    finish(request);
}

void KeyTapObject::askUser(Request& request) {
    if (!asked_.insert(request.user).second) {
        answerError(request, busy, "This user is being asked already");
        return;
    }
    request.asksUser = true;
    request.cancellation = std::to_string(++cancellations_);
    sd_bus_slot* slot = nullptr;
    sd_bus_message* created = nullptr;
    int status = sd_bus_message_new_method_call(bus_, &created, authority, authorityPath, authorityInterface,
                                                "CheckAuthorization");
    const BusMessage question(created);
    if (status >= 0) {
        status = sd_bus_message_append(created, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                       request.sender.c_str(), KeyTapNames::action, 0, allowUserInteraction,
                                       request.cancellation.c_str());
    }
    if (status >= 0) {
        status = sd_bus_call_async(bus_, &slot, created, &KeyTapObject::userAnswered, &request, longestDialog);
        request.answer.reset(slot);
    }
    if (status < 0) {
        answerError(request, failed, "polkit cannot be asked");
        return;
    }
    const std::string match =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2='',arg0='" + request.sender + "'";
    if (sd_bus_add_match_async(bus_, &slot, match.c_str(), &KeyTapObject::callerLeft, nullptr, &request) >= 0)
        request.departure.reset(slot);
}

int KeyTapObject::userAnswered(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
    KeyTapObject& object = *request.object;
    if (const sd_bus_error* error = sd_bus_message_get_error(reply); error != nullptr) {
        Log::warning(std::string("polkit does not answer: ") + error->name);
        if (std::strcmp(error->name, SD_BUS_ERROR_NO_REPLY) == 0) object.cancel(request);
        object.answerError(request, failed, "polkit does not answer");
        return 0;
    }
    int isAuthorized = 0;
    const bool isRead =
        sd_bus_message_enter_container(reply, 'r', "bba{ss}") > 0 && sd_bus_message_read(reply, "b", &isAuthorized) > 0;
    const bool isGranted = isRead && isAuthorized != 0 && object.access_.grant(request.user);
    if (isGranted) Log::notice("User " + std::to_string(request.user) + " was given access to the keyboards");
    object.answer(request, isGranted);
    return 0;
}

int KeyTapObject::callerLeft(sd_bus_message* signal, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
    if (!BusOwner::busHasSent(signal)) return 0;
    request.object->cancel(request);
    request.object->finish(request);
    return 0;
}

void KeyTapObject::cancel(Request& request) {
    // Whether there was still a dialog does not matter.
    sd_bus_call_method_async(bus_, nullptr, authority, authorityPath, authorityInterface, "CancelCheckAuthorization",
                             nullptr, nullptr, "s", request.cancellation.c_str());
}

void KeyTapObject::answer(Request& request, bool value) {
    sd_bus_reply_method_return(request.call.get(), "b", static_cast<int>(value));
    finish(request);
}

void KeyTapObject::answerError(Request& request, const char* error, const char* message) {
    sd_bus_reply_method_errorf(request.call.get(), error, "%s", message);
    finish(request);
}

void KeyTapObject::finish(Request& request) {
    if (request.asksUser) asked_.erase(request.user);
    requests_.erase(request.self);
}

}  // namespace quillmere::tap
