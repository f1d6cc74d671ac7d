// A program folder and the prefix's real startup locations, for the tests of the refresh and
// of the item moves.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "config/delay_load.h"
#include "items/item_moves.h"
#include "items/refresh.h"
#include "platform/registry.h"
#include "config/app_state.h"
#include "support/win_test_support.h"

namespace tolvane::test {

class StartupFixture : public ::testing::Test {
protected:
    void SetUp() override {
        places.Clear();
        app.folders.UserStartupFolder = places.UserFolder;
        app.folders.CommonStartupFolder = places.CommonFolder;
        app.Store().File().LoadItems();
        app.model.StartupType = 0; // the program's own Run value stays out of these tests
        app.Store().File().WriteItems();
    }
    void TearDown() override { places.Clear(); }

    // As the main window does after every move.
    void Refresh() {
        ASSERT_TRUE(RefreshData(app.Store(), app.text, app.SafeList, app.log, tree, listing));
    }
    ItemMoves Moves() { return ItemMoves({app.Store(), app.text, app.messages, app.log}, nullptr); }
    // The popup's move of the item that a leaf of the container shows.
    bool Move(const std::string& container, const std::string& text, ItemState to) {
        const StartupItem* item = ItemOfNode(tree, listing, Node(container, text));
        return Moves().Move(item ? *item : StartupItem{}, to); // Node said which is missing
    }

    // A toolbar button's pass over the ticked items.
    bool Pass(CheckedMove move) {
        std::vector<ItemMove> wanted;
        for (const CheckedTarget& target : CheckedTargets(move, tree))
            wanted.push_back({*ItemOfNode(tree, listing, target.Node), target.To});
        return Moves().MovePass(wanted);
    }

    // The items as the next start lists them: the program-group file read back afresh.
    std::vector<StartupItem> ReadBack() {
        CapturedMessages quiet;
        AppState reader(folder.Path(), quiet);
        reader.text.Languages = app.text.Languages;
        reader.folders.UserStartupFolder = places.UserFolder;
        reader.folders.CommonStartupFolder = places.CommonFolder;
        reader.Store().File().LoadItems(false);
        TreeModel readTree;
        StartupListing read;
        EXPECT_TRUE(
            RefreshData(reader.Store(), reader.text, reader.SafeList, reader.log, readTree, read));
        return read.Items;
    }

    std::vector<int> Leaves(const std::string& container) {
        return tree.Node(tree.Find(container)).Children;
    }
    // The texts of a container's items, sorted.
    std::vector<std::string> Items(const std::string& container) {
        std::vector<std::string> texts;
        for (int child : Leaves(container))
            texts.push_back(tree.Node(child).Text);
        std::sort(texts.begin(), texts.end());
        return texts;
    }
    int Node(const std::string& container, const std::string& text) {
        for (int child : Leaves(container))
            if (tree.Node(child).Text == text)
                return child;
        ADD_FAILURE() << text << " is not under " << container;
        return TreeModel::kNone;
    }

    std::string UserItems(const std::string& name) const {
        return app.folders.UserItemsFolder + name;
    }
    std::string UserStartup(const std::string& name) const {
        return places.UserFolder + "\\" + name;
    }
    void Shortcut(const std::string& folder, const std::string& name) {
        ASSERT_TRUE(CreateShortcut(folder + "\\" + name, "C:\\windows\\notepad.exe", name));
    }
    void RunValue(RegistryRoot root, const std::string& name, const std::string& data) {
        ASSERT_TRUE(reg.SaveSettingString(root, kRunKey, name, data));
    }
    std::string Run(RegistryRoot root, const std::string& name) {
        return reg.GetSettingString(root, kRunKey, name, "(none)");
    }
    std::string Saved(RegistryRoot root, const std::string& name) {
        return reg.GetSettingString(
            root, root == RegistryRoot::CurrentUser ? kSavedUserRunKey : kSavedMachineRunKey, name,
            "(none)");
    }

    // A shortcut or Run value and its bytes (a value's type, then its data).
    struct Item {
        ItemLocation location;
        std::string name, bytes;
        auto operator<=>(const Item&) const = default;
    };
    // Every shortcut and Run value where Windows starts it or, held, in the program's keeping
    // (its items folders and the saved copies of values, in each value's own registry view),
    // sorted.
    std::vector<Item> Inventory(bool held) {
        std::vector<Item> all;
        const std::pair<ItemLocation, std::string> folders[] = {
            {ItemLocation::UserFolder, held ? app.folders.UserItemsFolder : places.UserFolder},
            {ItemLocation::CommonFolder,
             held ? app.folders.AllUsersItemsFolder : places.CommonFolder}};
        for (const auto& [at, dir] : folders)
            for (const std::string& path : FilesBelow(dir))
                all.push_back({at, path.substr(path.rfind('\\') + 1), ReadFileBytes(path)});
        const std::tuple<ItemLocation, RegistryRoot, const char*> keys[] = {
            {ItemLocation::UserRun, RegistryRoot::CurrentUser, kSavedUserRunKey},
            {ItemLocation::MachineRun, RegistryRoot::LocalMachine, kSavedMachineRunKey},
            {ItemLocation::MachineRun32, RegistryRoot::LocalMachine32, kSavedMachineRunKey}};
        for (auto [at, root, saved] : keys)
            for (auto& [name, v] : reg.EnumValues(root, held ? saved : kRunKey))
                all.push_back(
                    {at, name, std::to_string(v.Type) + std::string(v.Data.begin(), v.Data.end())});
        std::sort(all.begin(), all.end());
        return all;
    }

    StartupLocations places;
    TempFolder folder{"program"};
    CapturedMessages messages;
    AppState app{folder.Path(), messages};
    TreeModel tree;
    StartupListing listing;
    CRegistry reg;
};

} // namespace tolvane::test
