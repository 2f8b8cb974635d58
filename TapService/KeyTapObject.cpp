#include "TapService/KeyTapObject.h"

#include "TapService/Log.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace quillmere::tap {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* authority = "org.freedesktop.PolicyKit1";
constexpr const char* authorityPath = "/org/freedesktop/PolicyKit1/Authority";
constexpr const char* authorityInterface = "org.freedesktop.PolicyKit1.Authority";

constexpr const char* notGranted = "org.quillmere.KeyTap1.Error.NotGranted";
constexpr const char* notActive = "org.quillmere.KeyTap1.Error.NotActive";
constexpr const char* busy = "org.quillmere.KeyTap1.Error.Busy";
constexpr const char* failed = "org.quillmere.KeyTap1.Error.Failed";

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
    int status = sd_bus_add_object_vtable(bus_, &slot, path, interface, vtable, this);
    slot_.reset(slot);
    // The one call that waits: no keyboard is open yet.
    if (status >= 0) status = sd_bus_request_name(bus_, name, 0);
    if (status < 0) Log::error("Cannot take the name org.quillmere.KeyTap1 on the bus", status);
    return status >= 0;
}

int KeyTapObject::version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "u", std::uint32_t{tap::version});
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
            answer(request, grants_.isGranted(request.user));
            return;
        case Method::requestAccess:
            if (grants_.isGranted(request.user)) {
                answer(request, true);
            } else {
                askUser(request);
            }
            return;
        case Method::revokeAccess:
            grants_.revoke(request.user);
            server_.closeTaps([this](uid_t user) { return grants_.isGranted(user); });
            sd_bus_reply_method_return(request.call.get(), "");
            finish(request);
            return;
        case Method::openTap:
            answerOpenTap(request);
            return;
    }
}

void KeyTapObject::answerOpenTap(Request& request) {
    if (!grants_.isGranted(request.user)) {
        answerError(request, notGranted, "This user has not been given access to the keyboards");
        return;
    }
    const std::optional<std::string> session = sessions_.activeSession(request.process, request.user);
    if (!session) {
        answerError(request, notActive, "Only a program of the active session on this machine's seat gets a tap");
        return;
    }
    const FileDescriptor program = server_.openTap(request.user, *session);
    if (!program) {
        answerError(request, failed, "There are no descriptors left");
        return;
    }
    // The message keeps a duplicate.
    sd_bus_reply_method_return(request.call.get(), "h", program.get());
    finish(request);
}

void KeyTapObject::askUser(Request& request) {
    const auto isSameUser = [&request](const Request& other) { return other.asksUser && other.user == request.user; };
    if (std::ranges::any_of(requests_, isSameUser)) {
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
                                       request.sender.c_str(), action, 0, allowUserInteraction,
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
    const bool isGranted = isRead && isAuthorized != 0 && object.grants_.grant(request.user);
    if (isGranted) Log::notice("User " + std::to_string(request.user) + " was given access to the keyboards");
    object.answer(request, isGranted);
    return 0;
}

int KeyTapObject::callerLeft(sd_bus_message*, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
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
    requests_.remove_if([&request](const Request& candidate) { return &candidate == &request; });
}

}  // namespace quillmere::tap
