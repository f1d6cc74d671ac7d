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
    // The item a leaf of the container shows, as the last refresh listed it.
    StartupItem ItemIn(const std::string& container, const std::string& text) {
        const StartupItem* item = ItemOfNode(tree, listing, Node(container, text));
        EXPECT_TRUE(item) << text;
        return item ? *item : StartupItem{};
    }
    // The popup's move of that item.
    bool Move(const std::string& container, const std::string& text, ItemState to) {
        return Moves().Move(ItemIn(container, text), to);
    }
    // A toolbar button's pass over the ticked items.
    bool Pass(CheckedMove move, ItemMoves moves) {
        std::vector<ItemMove> wanted;
        for (const CheckedTarget& target : CheckedTargets(move, tree))
            wanted.push_back({*ItemOfNode(tree, listing, target.Node), target.To});
        return moves.MovePass(wanted);
    }
    bool Pass(CheckedMove move) { return Pass(move, Moves()); }

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
    void Check(const std::string& container, const std::string& text) {
        if (int n = Node(container, text); n != TreeModel::kNone)
            tree.Node(n).Checked = true;
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

    StartupLocations places;
    TempFolder folder{"program"};
    CapturedMessages messages;
    AppState app{folder.Path(), messages};
    TreeModel tree;
    StartupListing listing;
    CRegistry reg;
};

} // namespace tolvane::test
