// The administrator's policies in the prefix's real registry: what each value changes in what
// Tolvane does (moves, the log-on run, the program's own Run value, the options), and the
// administrative templates that describe them, read by a real XML parser (MSXML).
#include <msxml2.h>

#include <set>

#include "config/policies.h"
#include "items/run_entry.h"
#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "text/placeholders.h"
#include "ui/main_window_fixture.h"
#include "ui/options/options_dialog.h"
#include "ui/options/options_ids.h"

namespace tolvane {
namespace {

constexpr auto machine = RegistryRoot::LocalMachine64, user = RegistryRoot::CurrentUser;

template <class T> using Com = std::unique_ptr<T, decltype([](IUnknown* p) { p->Release(); })>;

// The texts of what the XPath finds in a file as MSXML parses it; a file that is not
// well-formed fails the test.
std::set<std::string> Select(const std::string& path, const std::string& xpath) {
    CLSID dom{};
    IXMLDOMDocument* raw = nullptr;
    if (SUCCEEDED(CLSIDFromProgID(L"Msxml2.DOMDocument.6.0", &dom)))
        CoCreateInstance(dom, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                         reinterpret_cast<void**>(&raw));
    Com<IXMLDOMDocument> document(raw);
    VARIANT file{};
    file.vt = VT_BSTR;
    file.bstrVal = SysAllocString(Wide(path).c_str());
    BSTR query = SysAllocString(Wide(xpath).c_str());
    VARIANT_BOOL loaded = VARIANT_FALSE;
    IXMLDOMNodeList* list = nullptr;
    if (!document || document->put_async(VARIANT_FALSE) != S_OK ||
        document->load(file, &loaded) != S_OK || !loaded ||
        document->selectNodes(query, &list) != S_OK)
        ADD_FAILURE() << "MSXML reads no well-formed " << path << ", or no XPath " << xpath;
    VariantClear(&file);
    SysFreeString(query);
    std::set<std::string> found;
    Com<IXMLDOMNodeList> nodes(list);
    for (IXMLDOMNode* n = nullptr; nodes && nodes->nextNode(&n) == S_OK && n;) {
        Com<IXMLDOMNode> node(n);
        BSTR text = nullptr;
        node->get_text(&text);
        found.insert(Narrow(text ? text : L""));
        SysFreeString(text);
    }
    return found;
}

// The templates beside the built program, as they ship: every value they write is one that
// Tolvane reads (its own table), under its keys, and every text and presentation they refer to
// is there in each language.
TEST(PolicyTemplates, WriteTheValuesTolvaneReadsWithEveryTextInEachLanguage) {
    ASSERT_TRUE(EnsureCom());
    const std::string folder = test::BuiltProgramFolder() + "\\policy\\";
    const std::string admx = folder + "Tolvane.admx";
    std::set<std::string> read{kPolicyKey, kLockedItemsKey};
    for (const PolicyValueRule& rule : kPolicyValues)
        read.insert(rule.Name);
    EXPECT_EQ(Select(admx, "//@valueName | //@key"), read);
    const std::set<std::string> referred = Select(admx, "//@*[starts-with(., '$(')]");
    EXPECT_GT(referred.size(), 10u);
    for (const char* language : {"en-US", "de-DE"}) {
        std::set<std::string> defined;
        for (const std::string kind : {"string", "presentation"})
            for (const std::string& id : Select(folder + language + "\\Tolvane.adml",
                                                "//*[local-name()='" + kind + "']/@id"))
                defined.insert("$(" + kind + "." + id + ")");
        for (const std::string& id : referred)
            EXPECT_TRUE(defined.count(id)) << language << " has no " << id;
    }
}

// A policy value as Group Policy writes it; the fixture's clearing of the startup locations
// takes it away again.
void Set(RegistryRoot root, const char* name, uint32_t value) {
    ASSERT_TRUE(CRegistry().SetValue(root, kPolicyKey, name,
                                     {REG_DWORD, {uint8_t(value), uint8_t(value >> 8), 0, 0}}));
}
using PolicyTest = test::MainWindowTest;

// A locked item among the ticked items of a pass, and any item while only the administrator
// moves items: refused with the policy named, in the window and by tolvanec (exit code 2), and
// no item moves.
TEST_F(PolicyTest, ALockedItemAndAnyItemUnderAdminMovesOnlyAreRefusedAndNothingMoves) {
    ASSERT_TRUE(CopyFileA((test::BuiltProgramFolder() + "\\tolvanec.exe").c_str(),
                          (folder / "tolvanec.exe").c_str(), FALSE));
    RunValue(user, "OneDrive", "C:\\od.exe /background");
    RunValue(user, "Free", "C:\\free.exe");
    ASSERT_TRUE(
        reg.SetValue(machine, kLockedItemsKey, "1", test::WideValue(REG_SZ, "user-run\\ONEDRIVE")));
    Refresh();
    const std::vector<Item> before = Inventory(false);
    const std::string locked = "OneDrive=C:\\od.exe /background";
    for (const std::string& text : {locked, std::string("Free=C:\\free.exe")})
        tree.Node(Node("CurrentUserRegistry", text)).Checked = true;
    EXPECT_FALSE(Pass(CheckedMove::Stop));
    EXPECT_EQ(messages.shown, (std::vector<test::CapturedMessages::Shown>{
                                  {FillIn(app.text.Message(43), {locked}), "Tolvane", 0x30}}));

    Set(user, "AdminMovesOnly", 1);
    const std::string out = folder / "out.txt";
    test::ChildProcess cli("cmd.exe /c \"\"" + folder / "tolvanec.exe" + "\" stop Free 2>\"" + out +
                           "\"\"");
    unsigned long code = 99;
    ASSERT_TRUE(cli.WaitForExit(60000, &code));
    EXPECT_EQ(code, 2u);
    EXPECT_EQ(test::ReadFileBytes(out), FillIn(app.text.Message(44), {"Free=C:\\free.exe"}) + "\n");
    EXPECT_EQ(Inventory(false), before);
}

// Started for this user at log-on though the user's own choice is never: the window's refresh
// writes the program's own Run value. The options show the fixed settings greyed, with the
// policy's values and their tip; OK stores only what the user may change.
TEST_F(PolicyTest, AFixedStartupTypeDecidesTheOwnRunValueAndFixedSettingsShowGreyed) {
    app.Store().Change([&](ProgramModel& m) { m.MainStartupDelay = 20; });
    Set(machine, "MainDelay", 45);
    Set(machine, "StartupType", 2);
    Open();
    EXPECT_EQ(Run(user, kOwnRunValue), app.folders.RunCommand);
    OptionsDialog options(app.Store(), app.text, messages, app.log);
    ASSERT_TRUE(options.ShowModeless(GetModuleHandleA(nullptr), hwnd));
    auto item = [&](int id) { return GetDlgItem(options.Hwnd(), id); };
    EXPECT_EQ(test::TextOf(item(IDC_OPT_DELAY)), "45");
    EXPECT_EQ(SendMessageA(item(IDC_OPT_RUN), CB_GETCURSEL, 0, 0), 2);
    for (int id : {IDC_OPT_DELAY, IDC_OPT_RUN, IDC_OPT_WAIT_IDLE}) {
        RECT r{};
        GetWindowRect(item(id), &r);
        TTHITTESTINFOA hit{options.Hwnd(), {(r.left + r.right) / 2, (r.top + r.bottom) / 2}};
        ScreenToClient(options.Hwnd(), &hit.pt);
        hit.ti.cbSize = sizeof hit.ti;
        char tip[128] = {};
        if (SendMessageA(options.Tips(), TTM_HITTESTA, 0, reinterpret_cast<LPARAM>(&hit))) {
            hit.ti.lpszText = tip;
            SendMessageA(options.Tips(), TTM_GETTEXTA, sizeof tip,
                         reinterpret_cast<LPARAM>(&hit.ti));
        }
        const bool fixed = id != IDC_OPT_WAIT_IDLE;
        EXPECT_EQ(IsWindowEnabled(item(id)) == FALSE, fixed) << id;
        EXPECT_EQ(std::string(tip), fixed ? "Set by your administrator" : "") << id;
    }
    ClickOn(item(IDC_OPT_WAIT_IDLE));
    ClickOn(item(IDOK));
    for (const char* line :
         {"const MainStartupDelay = 20;", "const StartupType = 0;", "const WaitForIdle = 1;"})
        EXPECT_NE(File().find(line), std::string::npos) << line;
}

} // namespace
} // namespace tolvane
