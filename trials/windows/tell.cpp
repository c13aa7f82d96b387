// Tells a trial of the windows of other programs on Windows: for each line of its input
// the controls of all windows, a line each, and an empty line. The fields of a line, with
// tabs between them:
//
//     depth, class, text, left, top, width, height, states, content
//
// The states are v (visible), e (enabled), f (has the keyboard) and a (the active window);
// the content is that of a list's rows or a text, with "\n" for each line end.
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3 + 1, '\0');
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

std::string line(const std::wstring& text) {
    std::string told;
    for (const char c : utf8(text)) {
        if (c == '\n') told += "\\n";
        if (c != '\n' && c != '\r' && c != '\t') told += c;
    }
    return told;
}

LRESULT ask(HWND window, UINT message, WPARAM w = 0, LPARAM l = 0) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(window, message, w, l, SMTO_ABORTIFHUNG, 2000, &result);
    return static_cast<LRESULT>(result);
}

std::wstring textOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(ask(window, WM_GETTEXTLENGTH)) + 1, L'\0');
    const auto length = ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Memory of the other program, for messages that hand out texts.
class There {
  public:
    explicit There(HWND window) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        process_ =
            OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, process);
        memory_ = static_cast<char*>(
            VirtualAllocEx(process_, nullptr, kSize, MEM_COMMIT, PAGE_READWRITE));
    }
    ~There() {
        VirtualFreeEx(process_, memory_, 0, MEM_RELEASE);
        CloseHandle(process_);
    }
    There(const There&) = delete;
    There& operator=(const There&) = delete;

    std::wstring cell(HWND list, int row, int column) {
        LVITEMW item{};
        item.iSubItem = column;
        item.cchTextMax = kText;
        item.pszText = reinterpret_cast<wchar_t*>(memory_ + sizeof item);
        WriteProcessMemory(process_, memory_, &item, sizeof item, nullptr);
        const auto length = ask(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                                reinterpret_cast<LPARAM>(memory_));
        return read(sizeof item, static_cast<std::size_t>(length));
    }

    std::wstring panel(HWND bar, int index) {
        const auto length = LOWORD(
            ask(bar, SB_GETTEXTW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(memory_)));
        return read(0, length);
    }

  private:
    static constexpr int kText = 500;
    static constexpr std::size_t kSize = 8192;

    std::wstring read(std::size_t at, std::size_t length) {
        std::wstring text(length, L'\0');
        ReadProcessMemory(process_, memory_ + at, text.data(), length * sizeof(wchar_t), nullptr);
        return text;
    }

    HANDLE process_;
    char* memory_;
};

std::wstring contentOf(HWND window, const std::wstring& kind) {
    std::wstring content;
    if (kind == L"SysListView32") {
        There there(window);
        const auto rows = ask(window, LVM_GETITEMCOUNT);
        const auto columns =
            ask(reinterpret_cast<HWND>(ask(window, LVM_GETHEADER)), HDM_GETITEMCOUNT);
        content = std::to_wstring(rows) + L" rows, " +
                  std::to_wstring(ask(window, LVM_GETNEXTITEM, static_cast<WPARAM>(-1),
                                      MAKELPARAM(LVNI_SELECTED, 0)));
        for (int row = 0; row < rows && row < 100; ++row) {
            content += L'\n';
            for (int column = 0; column < columns; ++column)
                content += L'|' + there.cell(window, row, column);
        }
    } else if (kind == L"msctls_statusbar32") {
        There there(window);
        const auto count = ask(window, SB_GETPARTS);
        for (int i = 0; i < count; ++i) content += (i == 0 ? L"" : L"\n") + there.panel(window, i);
    }
    return content;
}

void tell(HWND window, int depth, HWND focus) {
    if (!IsWindowVisible(window)) return;
    wchar_t kind[64] = {};
    GetClassNameW(window, kind, 64);
    RECT place{};
    GetWindowRect(window, &place);
    std::string states = "v";
    if (IsWindowEnabled(window)) states += 'e';
    if (window == focus) states += 'f';
    if (window == GetForegroundWindow()) states += 'a';
    std::printf("%d\t%s\t%s\t%ld\t%ld\t%ld\t%ld\t%s\t%s\n", depth, utf8(kind).c_str(),
                line(textOf(window)).c_str(), place.left, place.top, place.right - place.left,
                place.bottom - place.top, states.c_str(), line(contentOf(window, kind)).c_str());
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        tell(child, depth + 1, focus);
    }
}

BOOL CALLBACK tellTop(HWND window, LPARAM) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    tell(window, 0, info.hwndFocus);
    return TRUE;
}

}  // namespace

int main() {
    while (std::getchar() == '\n') {
        EnumWindows(tellTop, 0);
        std::puts("");
        std::fflush(stdout);
    }
}
