#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/splitter.h>
#include <wx/statbox.h>
#include <wx/statusbr.h>
#include <wx/toolbar.h>
#include <wx/treectrl.h>
#include <wx/weakref.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gas/template.h"
#include "services/viewtext.h"
#include "ui/common/combo.h"
#include "ui/common/host_wx.h"
#include "ui/common/reportlist.h"
#include "ui/frmMain/commands.h"
#include "ui/frmMain/modTray.h"
#include "ui/frmZeltor/timedlauncher.h"

namespace kestrel {

// The open file.
struct Document {
    std::vector<GasTemplate> templates;
    std::wstring path;               // the file opened last with success
    std::optional<FileStamp> stamp;  // what that was when it was loaded
};

// The start-up window.
class frmMain final : public wxFrame {
  public:
    // The panels of the status bar.
    enum Panel { pnlInfo, pnlType, pnlTemplates, pnlProps, kPanelCount };
    // The buttons by their index.
    enum Button {
        kDone = 0,
        kSource = 1,
        kParsed = 2,
        kReload = 3,
        kListed = 4,
        kChain = 5,
        kTest = 10
    };

    frmMain();
    ~frmMain() override;

    // Reads the settings and the history, and opens `commandFile` when there is
    // one.
    void start(const std::wstring& commandFile);

    // Opens the file at `path`; asks for one when it is empty. True when a file
    // was opened.
    bool openFile(std::wstring path);

    // Opens the file whose path stands in the history box; true when it was
    // opened.
    bool reload();

    // Loads the open file again, as another window has changed it. The template
    // at the selected one's place is selected again.
    void reloadOpenFile();

    // The commands of the table. Each is true when it did its work; one that
    // cannot be done now does nothing or tells why.
    bool previewAll();
    bool notImplemented();
    bool saveCurrent();
    bool convertFolder();
    enum class SearchKind { none, properties, templates };
    bool find(SearchKind kind);
    bool findAgain();
    bool copyProperties();
    bool copyTemplates();
    bool showProperties();
    bool runSkritPad();
    bool runNotepad();
    bool startOrvane();
    bool browseArchive();
    bool buildArchive();
    bool runTool(std::size_t index);
    bool resetTools();
    bool help();
    bool editSource();
    bool viewParsed();
    bool viewListed();
    bool viewChain();
    bool test();

    // Gives the user tools' entries the captions of the settings.
    void showToolCaptions();

    // Runs a command as its button, entry or key does.
    void run(const Command& command);

    const Document& document() const noexcept { return document_; }

    // The selected template; null without one.
    const GasTemplate* selectedTemplate() const;

    // The branch path of the selected tree node; empty without one.
    std::wstring selectedBranch() const;

    HistoryCombo* cboHistory;
    wxStaticBox* fraTemplate;
    wxStaticBox* fraInfo;
    ReportList* lvwTemplates;
    wxTreeCtrl* tvwInfo;
    wxCheckBox* chkTree;
    ReportList* lvwProperties;
    wxStatusBar* stbMain;
    wxToolBar* tbrMain;
    wxMenu* mnuFile;
    std::map<int, wxButton*> cmdCommands;

  private:
    // Building it (layout.cpp).
    void buildMenu();
    void buildToolBar();
    void addTool(const Command& command);
    void refreshIcons();
    void buildControls();
    wxWindow* buildTemplatePane(wxWindow* parent);
    wxWindow* buildInfoPane(wxWindow* parent);
    wxButton* addButton(wxWindow* parent, Button index);
    void buildStatusBar();
    void tellPanel(const wxPoint& mouse);

    // The lists and the tree (browse.cpp).
    void bindBrowsing();
    bool mSelectFile(std::wstring path);
    void templateSelected();
    void nodeClicked();
    void mLoadTree(const GasTemplate& record);
    void fillProperties(std::wstring_view path);
    void clearViews();
    void setPanel(Panel panel, std::wstring_view text);

    // The window itself (frmMain.cpp).
    void bindWindow();
    void historyChanged();
    void iconized(bool now);
    void restore();
    void closing(wxCloseEvent& event);
    void shutDown();
    void leave();
    void endFrontDialog();
    wxMenu* makeFileMenu();
    void keyPressed(wxKeyEvent& event);
    bool busy() const;
    bool isOpen() const noexcept { return !document_.path.empty(); }

    // Running commands (dispatch.cpp) and their work (work.cpp, search.cpp).
    void repeat(const Command& button);
    void choose(const Command& entry);
    enum class View { rendered, listed, editable };
    void view(std::wstring_view caption, std::wstring_view text, View kind);
    std::wstring fileText();
    // The open file for the windows that show its texts.
    OpenFile openFileHooks();
    void propertyActivated();
    bool search(SearchKind kind, bool again);

    Document document_;
    std::unique_ptr<TrayIcon> tray_;
    std::map<std::string_view, int> toolIds_;
    std::map<std::string_view, wxMenuItem*> entryItems_;
    std::map<std::string_view, std::size_t> repeat_;  // 1-based; 0: nothing chosen yet
    TimedLauncher redLauncher_;                       // runs the builder, whatever dialogs are open
    SearchKind searchKind_ = SearchKind::none;
    std::wstring lastSearch_[2];  // of the templates and the properties
    bool left_ = false;           // closed, and goes when nothing of it is at work
    wxWeakRef<wxDialog> ending_;  // told to, and waited for
    bool filling_ = false;        // the tree changes by code, not by the user
};

}  // namespace kestrel
