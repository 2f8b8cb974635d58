#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Settings/AppSettings.h"
#include "Quillmere/Settings/GroupView.h"
#include "Quillmere/Settings/SettingsWindow.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/FakeLoginItem.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/MemoryDefaults.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QTest>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

constexpr Shortcut controlOptionK{40, Modifiers::control | Modifiers::option};

/// A group with a fresh identifier.
inline CycleGroup group(std::vector<std::string> sourceIDs, std::optional<Shortcut> shortcut = std::nullopt) {
    return {.id = makeUUID(), .shortcut = shortcut, .sourceIDs = std::move(sourceIDs)};
}

/// The settings on a recording system with the sources "a" to "d", named Alpha
/// to Delta.
class SettingsTest : public testing::Test {
protected:
    SettingsTest() {
        service.records = {layout("a", "Alpha"), layout("b", "Beta"), layout("c", "Gamma"), layout("d", "Delta")};
    }
    ~SettingsTest() override { Palette::setDark(false); }

    /// Opens the settings over this configuration.
    void open(std::vector<CycleGroup> groups, PlateSettings plate = PlateSettings()) {
        window.reset();
        settings.reset();
        defaults.setData("config", encodeConfig({.active = true, .groups = std::move(groups), .plate = plate}));
        model = std::make_unique<ConfigModel>(defaults, InputSources(service));
        settings = std::make_unique<AppSettings>(updateStore, updatesEnabled, loginItem, workspace, offers);
        window = std::make_unique<SettingsWindow>(*model, *settings, InputSources(service), workspace, glassAvailable);
        window->windowWillClose = [this] { ++closings; };
        window->open();
        window->window()->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window->window(), 10000));
        writesBefore = defaults.writes("config");
    }

    QWidget& view() const { return *window->window(); }
    QAbstractButton& button(const QString& name) const { return quillmere::button(view(), name); }
    /// The groups' cards, from top to bottom.
    std::vector<GroupView*> cards() const {
        settle();
        return shown<GroupView>(view());
    }
    GroupView& card(std::size_t index) const { return *cards().at(index); }
    QAbstractButton& deleteButton(std::size_t index) const {
        return quillmere::button(card(index), QStringLiteral("Delete group %1").arg(index + 1));
    }
    QAbstractButton& addButton(std::size_t index) const {
        return quillmere::button(card(index), QStringLiteral("Add source to group %1").arg(index + 1));
    }
    /// The chip in the card's upper left corner.
    QAbstractButton& recorder(std::size_t index) const { return *shown<QAbstractButton>(card(index)).front(); }
    const std::vector<CycleGroup>& groups() const { return model->config().groups; }
    /// How often the configuration was stored since `open`.
    int writes() const { return defaults.writes("config") - writesBefore; }
    /// What is stored at this moment.
    Config stored() const { return decodeConfig(defaults.data("config").value()).value(); }

    /// A click with the mouse, where the user would click.
    static void click(QWidget& widget) {
        QTest::mouseClick(&widget, Qt::LeftButton);
        settle();
    }
    /// A key press delivered by the keyboard tap.
    void tapPress(std::int64_t keyCode, Modifiers modifiers = {}) const {
        if (const ShortcutHandler recorder = model->recorder()) recorder(keyCode, modifiers);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(view().focusWidget() ? view().focusWidget() : &view(), key, modifiers);
    }
    void showTab(SettingsTab tab) const {
        settings->setTab(tab);
        settle();
    }

    MemoryDefaults defaults;
    FakeInputSourceService service;
    FakeWorkspace workspace;
    FakeLoginItem loginItem;
    std::vector<std::unique_ptr<Offer>> offers;
    UpdateStore updateStore{defaults};
    bool updatesEnabled = true;
    bool glassAvailable = false;
    int closings = 0;
    int writesBefore = 0;
    std::unique_ptr<ConfigModel> model;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<SettingsWindow> window;
};

}  // namespace quillmere
