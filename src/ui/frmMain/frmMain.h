#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/splitter.h>
#include <wx/statbox.h>
#include <wx/timer.h>
#include <wx/toolbar.h>
#include <wx/weakref.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gas/template.h"
#include "system/codepage.h"
#include "ui/common/combo.h"
#include "ui/common/releasedkeys.h"
#include "ui/common/reportlist.h"
#include "ui/common/statuspanels.h"
#include "ui/frmMain/commands.h"
#include "ui/frmMain/modTray.h"
#include "ui/frmZeltor/timedlauncher.h"
#include "ui/host/host_wx.h"
#include "view/closing.h"
#include "view/tree.h"
#include "view/viewtext.h"

namespace kestrel {

// The open file.
struct Document {
    std::vector<GasTemplate> templates;
    std::wstring path;               // the file opened last with success
    std::optional<FileStamp> stamp;  // what that was when it was loaded

    // What its bytes were read as.
    const CodePage& page() const { return templates.at(0).Text.page(); }
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

    // Reads the settings, the layout and the history, and opens `commandFile` when
    // there is one.
    void start(const std::wstring& commandFile);

    // Writes the settings, the layout, the histories and what other windows keep.
    void keepAll();

    // Opens the file at `path`; asks for one when it is empty. True when a file
    // was opened.
    bool openFile(std::wstring path);

    // Loads the open file again, as another window has changed it. The template and
    // the block at the places of the selected ones are selected again.
    void reloadOpenFile();

    // The commands of the table. Each is true when it did its work; one that
    // cannot be done now does nothing or tells why.
    bool chooseFile() { return openFile({}); }
    bool reload();
    bool refresh();
    bool previewAll();
    bool notImplemented();
    bool saveCurrent();
    bool convertFolder();
    bool findPropertyName() { return find(SearchKind::properties); }
    bool findTemplateName() { return find(SearchKind::templates); }
    bool findAgain();
    bool copyProperties();
    bool copyTemplates();
    bool copyValue();
    bool copyRow();
    bool copyPath();
    bool copyName();
    bool follow();
    bool filterByProperty();
    bool filterByBlock();
    bool toggleFilter();
    bool showProperties();
    bool runSkritPad();
    bool runNotepad();
    bool startOrvane();
    bool browseArchive();
    bool buildArchive();
    template <std::size_t kIndex>
    bool runTool() {
        return runTool(kIndex);
    }
    // Reads the open file, until another one is opened, as of the page of this number.
    template <unsigned kNumber>
    bool useEncoding() {
        return useEncoding(kNumber);
    }
    bool resetTools();
    bool help();
    bool showManual();
    bool openSample();
    bool editSource();
    bool viewParsed();
    bool viewListed();
    bool viewChain();
    bool nextPane() { return changePane(1); }
    bool previousPane() { return changePane(-1); }
    bool toggleRemembering();
    bool restore();
    bool done() { return Close(); }
    bool test();

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
    std::unique_ptr<ReportList> lvwTemplates;
    NodeTree* tvwInfo;
    wxCheckBox* chkTree;
    std::unique_ptr<ReportList> lvwProperties;
    StatusPanels* stbMain;
    wxToolBar* tbrMain;
    wxMenu* mnuFile;
    std::map<int, wxButton*> cmdCommands;

  private:
    // Building it (layout.cpp).
    void buildControls();
    wxWindow* buildTemplatePane(wxWindow* parent);
    wxWindow* buildInfoPane(wxWindow* parent);
    wxSizer* buildInfoButtons();
    wxButton* addButton(wxWindow* parent, Button index);
    void buildStatusBar();
    void loadLayout();
    void saveLayout();
    wxString layoutText() const;
    wxSplitterWindow* makePanes(wxWindow* parent, double share);
    void shareWidth(wxSplitterWindow& panes);

    // Its menus and tools (menus.cpp).
    void buildMenus();
    void buildToolBar();
    void addTool(const Command& command);
    void refreshIcons();
    wxMenu* makeMenu(const std::vector<CommandMenuItem>& items);
    void showContextMenu(wxWindow& over, ContextOf which);
    void bindContextMenus();
    void showToolCaptions();
    bool can(const Command& command) const;
    bool isOn(const Command& command) const;
    void refreshCommands();
    void refreshMenu(wxMenu& menu, const std::vector<CommandMenuItem>& items);
    std::wstring menuCaption(const CommandMenuItem& item) const;
    const char* shownKey(const Command& command) const;

    // The lists and the tree (browse.cpp).
    void bindBrowsing();
    bool mSelectFile(std::wstring path);
    void templateSelected();
    void nodeClicked();
    void mLoadTree(const GasTemplate& record);
    void fillProperties(std::wstring_view path, bool anew);
    void selectBlock(std::size_t node);
    void clearViews();
    const BlockNode* selectedBlock() const;
    std::optional<GasProperty> selectedProperty() const;
    void setPanel(Panel panel, std::wstring_view text) { stbMain->setPanel(panel, text); }

    // The window itself (frmMain.cpp).
    void bindWindow();
    void historyChanged();
    void iconized(bool now);
    void keepPlace();
    void showTrayMenu();
    void keyPressed(wxKeyEvent& event);
    bool busy() const;
    bool isOpen() const noexcept { return !document_.path.empty(); }

    // How it goes (leaving.cpp).
    void closing(wxCloseEvent& event);
    bool mayLeaveBuilder();
    void shutDown();
    void leave();
    void endFrontDialog();

    // Running commands (dispatch.cpp) and their work (work.cpp, search.cpp).
    void repeat(const Command& button);
    void choose(const Command& entry);
    bool changePane(int step);
    enum class View { rendered, listed };
    // Shows a text, to be edited as the block of a file that it is.
    void view(std::wstring_view caption, std::wstring text, View kind,
              const std::optional<FileBlock>& block = {});
    // What earlier runs have left of texts that were not saved.
    void offerDrafts();
    std::wstring fileText();
    // The open file for the windows that show its texts.
    OpenFile openFileHooks();
    bool runTool(std::size_t index);
    bool useEncoding(unsigned number);
    std::wstring startOfPickers() const;
    enum class SearchKind { none, properties, templates };
    bool find(SearchKind kind);
    bool search(SearchKind kind, bool again);

    Document document_;
    std::vector<BlockNode> blocks_;  // of the selected template, as the tree shows them
    std::unique_ptr<TrayIcon> tray_;
    wxSplitterWindow* outerPanes_ = nullptr;      // the templates, and the rest
    wxSplitterWindow* innerPanes_ = nullptr;      // the tree, and the properties
    std::map<wxSplitterWindow*, double> shares_;  // of the width, of the pane at the left
    wxRect placed_;                               // while it is neither minimised nor maximised
    wxString layoutBefore_;                       // as it was read
    bool remember_ = false;                       // size and place of the window, too
    std::map<std::string_view, int> toolIds_;
    std::map<std::string_view, wxMenu*> dropDowns_;
    std::map<std::string_view, std::size_t> repeat_;  // 1-based; 0: nothing chosen yet
    TimedLauncher redLauncher_;                       // runs the builder, whatever dialogs are open
    SearchKind searchKind_ = SearchKind::none;
    std::wstring lastSearch_[2];  // of the templates and the properties
    ReleasedKeys released_;
    wxWeakRef<wxWindow> keyboard_;   // what had it last
    wxWeakRef<wxWindow> returning_;  // what gets it back, once the window is active
    Closing closing_;
    wxWeakRef<wxDialog> ending_;  // told to, and waited for
    wxTimer leaving_;
};

}  // namespace kestrel
