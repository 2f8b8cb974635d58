#pragma once

#include "TapService/Sessions.h"

#include <map>
#include <set>

namespace quillmere::tap {

/// A machine whose user a test chooses.
class FakeSessions : public Sessions {
public:
    struct Session {
        uid_t user = 0;
        bool isActive = true;
        bool isLocked = false;
    };

    std::map<std::string, Session> sessions;
    std::set<std::string> watched;

    std::optional<std::string> activeSession(pid_t, uid_t user) override {
        for (const auto& [name, session] : sessions) {
            if (session.user == user && session.isActive) return name;
        }
        return std::nullopt;
    }
    bool isActive(const std::string& session, uid_t user) override {
        const auto found = sessions.find(session);
        return found != sessions.end() && found->second.isActive && found->second.user == user;
    }
    bool isLocked(const std::string& session) override { return sessions.at(session).isLocked; }
    void watch(const std::string& session) override { watched.insert(session); }
    void unwatch(const std::string& session) override { watched.erase(session); }
    bool hasEnded(const std::string& session) override { return !sessions.contains(session); }

    /// One session comes to the front, all others go to the back.
    void activate(const std::string& name) {
        for (auto& [id, session] : sessions)
            session.isActive = id == name;
        if (onChange) onChange();
    }
    void lock(const std::string& name, bool isLocked) {
        sessions.at(name).isLocked = isLocked;
        if (onChange) onChange();
    }
};

}  // namespace quillmere::tap
