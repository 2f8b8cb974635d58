#pragma once

#include "TapService/Keyboards.h"
#include "Tests/TapService/TapBench.h"

namespace quillmere::tap {

/// The fake keyboards of the engine's tests, as the whole service sees them.
class FakeMachine : public Keyboards {
public:
    FakeKeyboards fakes;
    int drops = 0;

    bool start(KeyboardSink& sink) override {
        sink_ = &sink;
        return true;
    }
    void dropClones() override { ++drops; }

    std::optional<KeySet> open(DeviceId device) override { return fakes.open(device); }
    void close(DeviceId device) override { fakes.close(device); }
    void hearFnOnly(DeviceId device) override { fakes.hearFnOnly(device); }
    KeySet hearAll(DeviceId device) override { return fakes.hearAll(device); }
    CloneState prepareClone(DeviceId device) override { return fakes.prepareClone(device); }
    std::optional<Time> grab(DeviceId device) override {
        fakes.now = now();
        return fakes.grab(device);
    }
    std::optional<Time> ungrab(DeviceId device, bool force) override {
        fakes.now = now();
        return fakes.ungrab(device, force);
    }
    void forward(DeviceId device, const InputEvent& event) override { fakes.forward(device, event); }
    void forget(DeviceId device) override { fakes.forget(device); }

    /// Plugs in a keyboard with every key.
    void plug(DeviceId device) {
        FakeKeyboards::Keyboard& keyboard = fakes.keyboards[device];
        keyboard.keys.set();
        sink_->deviceAdded(device, keyboard.keys);
    }
    /// Moves keys, as "+ctrl +space".
    void type(DeviceId device, const std::string& words);

    FakeKeyboards::Keyboard& keyboard(DeviceId device) { return fakes.keyboards.at(device); }

private:
    static Time now();

    KeyboardSink* sink_ = nullptr;
};

}  // namespace quillmere::tap
