#pragma once

#include "TapService/DeviceMonitor.h"
#include "TapService/Keyboard.h"
#include "TapService/KeyboardClone.h"
#include "TapService/Keyboards.h"
#include "TapService/LockCarrier.h"

#include <map>
#include <memory>
#include <string>

namespace quillmere::tap {

/// The real keyboards.
class LinuxKeyboards : public Keyboards {
public:
    explicit LinuxKeyboards(sd_event* loop);

    bool start(KeyboardSink& sink) override;
    void dropClones() override;

    std::optional<KeySet> open(DeviceId device) override;
    void close(DeviceId device) override;
    void hearFnOnly(DeviceId device) override;
    KeySet hearAll(DeviceId device) override;
    CloneState prepareClone(DeviceId device) override;
    std::optional<Time> grab(DeviceId device) override;
    std::optional<Time> ungrab(DeviceId device, bool force) override;
    void forward(DeviceId device, const InputEvent& event) override;
    void forget(DeviceId device) override;

private:
    struct Entry {
        std::string path;
        KeySet keys;
        std::unique_ptr<Keyboard> keyboard;
        std::unique_ptr<KeyboardClone> clone;
        std::unique_ptr<LockCarrier> locks;  ///< with the clone
        EventSource lockCheck;
        bool cloneIsUnneeded = false;
        bool isRemoved = false;

        /// Some time after the locks were taken over.
        void checkLocks();
    };

    void found(const std::string& path, const std::string& node);
    void removed(const std::string& path);
    void cloneAppeared(const std::string& path);
    void remove(DeviceId device);
    void dropOneClone();
    bool makeClone(DeviceId device, Entry& entry);
    void takeLocksOver(Entry& entry);

    sd_event* loop_;
    KeyboardSink* sink_ = nullptr;
    std::map<DeviceId, Entry> entries_;
    DeviceId lastId_ = 0;
    DeviceMonitor monitor_;
    EventSource dropping_;
};

}  // namespace quillmere::tap
