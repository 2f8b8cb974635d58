#pragma once

#include <QString>

namespace quillmere {

/// Where the user grants what the keyboard tap needs. Main thread only.
class PermissionRequest {
public:
    PermissionRequest() = default;
    PermissionRequest(const PermissionRequest&) = delete;
    PermissionRequest& operator=(const PermissionRequest&) = delete;
    virtual ~PermissionRequest() = default;

    /// What the user is to do and what it is good for, in English: whole
    /// sentences. As of this moment.
    virtual QString directions() const = 0;

    /// Opens the system's own dialog or settings for it, or, when the system
    /// lacks something, the page that says what. Returns at once; that the
    /// permission was granted is found out by trying the tap.
    virtual void open() = 0;
};

}  // namespace quillmere
