#include "Quillmere/Switching/KeyInterceptor.h"

#include <utility>

namespace quillmere {

KeyInterceptor::KeyInterceptor(EventTap& tap, InputSources sources, ConfigProvider config, RecordProvider record,
                               SwitchCallback onSwitch)
    : tap_(tap),
      sources_(sources),
      config_(std::move(config)),
      record_(std::move(record)),
      onSwitch_(std::move(onSwitch)) {}

bool KeyInterceptor::start() {
    if (installed_ && tap_.deliversAll()) return true;
    const bool deliversAll = tap_.install([this](const KeyEventFields& event) { return handle(event); });
    installed_ = installed_ || deliversAll;
    return deliversAll;
}

InterceptDecision KeyInterceptor::handle(const KeyEventFields& event) {
    if (event.type == KeyEventType::tapDisabledByTimeout || event.type == KeyEventType::tapDisabledByUserInput) {
        if (installed_) tap_.enable();
        return InterceptDecision::pass;
    }
    const double time = static_cast<double>(event.timestamp) / 1'000'000'000;
    switch (event.type) {
        case KeyEventType::keyUp:
            return swallowed_.erase(event.keyCode) > 0 ? InterceptDecision::swallow : InterceptDecision::pass;
        case KeyEventType::keyDown:
            return handleKeyDown(event, time);
        case KeyEventType::systemDefined:
            fnGesture_.handle(FnGesture::Event::keyDown(), time);
            return InterceptDecision::pass;
        case KeyEventType::flagsChanged:
            handleFlags(event, time);
            return InterceptDecision::pass;
        default:
            return InterceptDecision::pass;
    }
}

InterceptDecision KeyInterceptor::handleKeyDown(const KeyEventFields& event, double time) {
    // First of all, whatever becomes of the key: any press spoils a lone Fn tap.
    fnGesture_.handle(FnGesture::Event::keyDown(), time);
    const Modifiers modifiers = Modifiers::fromFlags(event.flags);
    const bool isRepeat = event.autorepeat != 0;

    // A copy of the handler: taking the key may end the recording.
    if (const ShortcutHandler recorder = record_()) {
        swallowed_.insert(event.keyCode);
        if (!isRepeat) recorder(event.keyCode, modifiers);
        return InterceptDecision::swallow;
    }

    const std::shared_ptr<const Config> config = config_();
    const Shortcut shortcut{event.keyCode, modifiers};
    const CycleGroup* group = config->group(shortcut);
    if (group == nullptr) return InterceptDecision::pass;
    swallowed_.insert(event.keyCode);
    if (!isRepeat) fire(*config, *group, shortcut);
    return InterceptDecision::swallow;
}

void KeyInterceptor::handleFlags(const KeyEventFields& event, double time) {
    const bool fnNow = (event.flags & KeyEventFlags::secondaryFn) != 0;
    if (fnNow == fnDown_) {
        fnGesture_.handle(FnGesture::Event::modifiersChanged(), time);
        return;
    }
    fnDown_ = fnNow;
    const bool otherModifiers = !Modifiers::fromFlags(event.flags).isEmpty();
    if (fnGesture_.handle(fnNow ? FnGesture::Event::fnDown(otherModifiers) : FnGesture::Event::fnUp(), time)) {
        handleFnTap();
    }
}

void KeyInterceptor::handleFnTap() {
    if (const ShortcutHandler recorder = record_()) {
        recorder(Shortcut::fn.keyCode, Shortcut::fn.modifiers);
        return;
    }
    const std::shared_ptr<const Config> config = config_();
    if (const CycleGroup* group = config->group(Shortcut::fn)) fire(*config, *group, Shortcut::fn);
}

void KeyInterceptor::fire(const Config& config, const CycleGroup& group, const Shortcut& shortcut) {
    const std::optional<std::string> target = config.target(shortcut, sources_.currentID());
    if (target && sources_.select(*target)) onSwitch_(group, *target);
}

}  // namespace quillmere
