// Baseline for Tolvane's start-up cost: a program that does nothing but start one program the
// way Tolvane starts it, and ends.
//   shellexec_baseline <program> <parameters...>
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include <string>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    if (__argc < 2)
        return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::string parameters;
    for (int i = 2; i < __argc; ++i)
        parameters += (i > 2 ? " " : "") + std::string(__argv[i]);
    PIDLIST_ABSOLUTE item = ILCreateFromPathA(__argv[1]);
    SHELLEXECUTEINFOA info{};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI | (item ? SEE_MASK_INVOKEIDLIST : 0);
    info.lpIDList = item;
    info.lpFile = __argv[1];
    info.lpParameters = parameters.c_str();
    info.lpDirectory = "";
    info.nShow = SW_SHOWNORMAL;
    BOOL ok = ShellExecuteExA(&info);
    if (info.hProcess)
        CloseHandle(info.hProcess);
    if (item)
        ILFree(item);
    return ok ? 0 : 1;
}
