// frmProgramGroups: the program group editor as a dialog over its template. It renders the
// editor model and hands the user's typing and clicks back to it.
#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/program_group_store.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "ui/dialog.h"
#include "ui/group_editor/group_editor_model.h"
#include "ui/tree_view.h"

namespace tolvane {

class GroupEditorDialog : public Dialog<GroupEditorDialog>, private GroupEditorFiles {
public:
    static constexpr int kTemplateId = 300; // IDD_GROUP_EDITOR

    GroupEditorDialog(ProgramGroupStore store, const TextTables& text, UserMessages& messages,
                      EventLog& log);
    ~GroupEditorDialog();

    // Opens on this program of the "Startup" group, a delayed item's record, when one is given
    // (and found); the editor opens all the same when it is not.
    void OpenOn(std::optional<GroupProgram> record) { record_ = std::move(record); }

    GroupEditor& Model() { return editor_; }
    TreeViewControl* TreeView() { return tree_.get(); }

    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

private:
    friend class Dialog<GroupEditorDialog>;
    void Change(const std::function<void(ProgramModel&)>& change) override;
    void LoadItems() override;
    bool FileExists(const std::string& path) override;

    void Init();
    void ApplyCaptions();
    // The model's fields, list, buttons and (when asked) its tree on screen.
    void Render(bool tree);
    void RenderButtons();
    void ReadFields();
    void Command(int control, int code);

    ProgramGroupStore store_;
    const TextTables& text_;
    GroupEditor editor_;
    std::unique_ptr<TreeViewControl> tree_;
    std::optional<GroupProgram> record_;
    bool rendering_ = false;
};

} // namespace tolvane
