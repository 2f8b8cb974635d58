#include "Quillmere/AppDelegate.h"

#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Platform/Memory.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace quillmere {

AppDelegate::AppDelegate(Platform platform)
    : platform_(std::move(platform)),
      inputSources_(*platform_.inputSources),
      model_(*platform_.userDefaults, inputSources_),
      hud_(*platform_.platePanel, *platform_.mainQueue, platform_.appearance->hasGlass()),
      updateStore_(*platform_.userDefaults),
      updateAlert_(*platform_.workspace),
      updateChecker_(UpdateChecker::configured(*platform_.bundle)) {
    model_.setMayHearFn(platform_.keyboards->mayTellOfFn());
    Palette::setDark(platform_.appearance->isDark());
    connect(platform_.appearance.get(), &Appearance::changed, this,
            [this] { Palette::setDark(platform_.appearance->isDark()); });
    if (updateChecker_) makeUpdateSchedule();
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    model_.onPreview = [this] { hud_.show({"English", "Українська"}, 0, model_.config().plate); };
    settings().checkForUpdates = [this] { checkForUpdates(); };
    statusItem_ = std::make_unique<StatusItem>(model_, *platform_.appearance, *platform_.trayHost,
                                               StatusItem::Actions{
                                                   .toggleActive = [this] { toggleActive(); },
                                                   .openSettings = [this] { openSettings(); },
                                                   .quit = &QCoreApplication::quit,
                                               });
    startInterceptor();
    if (updateSchedule_) updateSchedule_->startUpdateSchedule();
}

bool AppDelegate::isFirstStart() const {
    return !model_.isStored() && !updateStore_.isStored() && !platform_.loginItem->isEnabled();
}

void AppDelegate::toggleActive() {
    Config config = model_.config();
    config.active = !config.active;
    model_.setConfig(std::move(config));
}

AppSettings& AppDelegate::settings() {
    if (!settings_) {
        settings_ = std::make_unique<AppSettings>(updateStore_, updatesEnabled(), *platform_.loginItem,
                                                  *platform_.workspace, platform_.offers);
    }
    return *settings_;
}

void AppDelegate::openSettings() {
    if (!settingsWindow_) {
        settingsWindow_ = std::make_unique<SettingsWindow>(model_, settings(), inputSources_, *platform_.workspace,
                                                           platform_.appearance->hasGlass());
        settingsWindow_->windowWillClose = [this] { windowWillClose(); };
    }
    model_.setMayHearFn(platform_.keyboards->mayTellOfFn());
    settingsWindow_->open();
    statusItem_->lendKeyEquivalents(*settingsWindow_->window());
}

void AppDelegate::windowWillClose() {
    // Else the keyboard tap would go on handing keys to a recorder that nobody sees.
    model_.endRecording();
    giveBackMemory();
}

void AppDelegate::checkForUpdates() {
    if (updateSchedule_) updateSchedule_->runUpdateCheck(true);
}

UpdateWindow& AppDelegate::updateWindow() {
    if (!updateWindow_) updateWindow_ = std::make_unique<UpdateWindow>(updateStore_, *platform_.workspace);
    return *updateWindow_;
}

void AppDelegate::makeUpdateSchedule() {
    const UpdateSchedule::Actions actions{
        .check =
            [this](UpdateSchedule::Completion completion) {
                updateChecker_->check(feedSession_, platform_.workspace->preferredLanguages(), std::move(completion));
            },
        .present =
            [this](const UpdateOffer& offer) {
                updateWindow().show(offer);
                statusItem_->lendKeyEquivalents(*updateWindow_->window());
            },
        .alert =
            [this](const std::string& message, const std::string& informativeText) {
                updateAlert_.show(message, informativeText);
                statusItem_->lendKeyEquivalents(*updateAlert_.window());
            },
    };
    updateSchedule_ =
        std::make_unique<UpdateSchedule>(*platform_.mainQueue, updateStore_, updateChecker_->current, actions);
}

KeyInterceptor& AppDelegate::interceptor() {
    if (!interceptor_) {
        interceptor_ = std::make_unique<KeyInterceptor>(
            *platform_.eventTap, inputSources_, [this] { return model_.snapshot(); },
            [this] { return model_.recorder(); },
            [this](const CycleGroup& group, const std::string& selectedID) { showSwitch(group, selectedID); });
    }
    return *interceptor_;
}

void AppDelegate::startInterceptor() {
    observeInterest();
    openPermissionGate();
}

void AppDelegate::openPermissionGate() {
    permissionGate_ = std::make_unique<PermissionGate>([this] { return interceptor().start(); });
    if (permissionGate_->state() == PermissionGate::State::granted) return;
    permissionWindow_ = std::make_unique<PermissionWindow>(std::make_shared<PermissionModel>(), *platform_.mainQueue,
                                                           *platform_.workspace, *platform_.permissionRequest);
    permissionWindow_->show();
    statusItem_->lendKeyEquivalents(*permissionWindow_->window());
    permissionGate_->onChange = [this](PermissionGate::State) {
        permissionWindow_->granted();
        retryTimer_.reset();
    };
    retryTimer_ = platform_.mainQueue->every(1.0, [this] { permissionGate_->tick(); });
}

void AppDelegate::observeInterest() {
    const auto update = [this] {
        platform_.eventTap->arm(model_.armedShortcuts());
        platform_.eventTap->setInterest(model_.interest());
        // A shortcut that the tap in use cannot hear takes a permission of its own.
        const bool isGranted = permissionGate_ && permissionGate_->state() == PermissionGate::State::granted;
        if (isGranted && !platform_.eventTap->deliversAll()) openPermissionGate();
    };
    platform_.eventTap->onSwitched = [this](const Shortcut& shortcut, const std::string& sourceID) {
        const std::shared_ptr<const Config> config = model_.snapshot();
        if (const CycleGroup* group = config->group(shortcut)) showSwitch(*group, sourceID);
    };
    connect(&model_, &ConfigModel::configChanged, this, update);
    connect(&model_, &ConfigModel::recordingChanged, this, update);
    update();
}

void AppDelegate::showSwitch(const CycleGroup& group, const std::string& selectedID) {
    const PlateSettings& plate = model_.config().plate;
    if (!plate.shouldShow(group.sourceIDs.size())) return;
    std::vector<std::string> names;
    names.reserve(group.sourceIDs.size());
    std::ranges::transform(group.sourceIDs, std::back_inserter(names),
                           [this](const std::string& id) { return model_.name(id); });
    const auto selected = std::ranges::find(group.sourceIDs, selectedID);
    const auto index = selected != group.sourceIDs.end() ? selected - group.sourceIDs.begin() : 0;
    // In the event loop's next turn: drawing takes a millisecond or two, and
    // until this callback has returned the keyboard waits for the verdict.
    plateWork_ = platform_.mainQueue->after(0, [this, names = std::move(names), index = static_cast<int>(index),
                                                plate] { hud_.show(names, index, plate); });
}

}  // namespace quillmere
