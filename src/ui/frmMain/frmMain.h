#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/splitter.h>
#include <wx/statbox.h>
#include <wx/statusbr.h>
#include <wx/treectrl.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gas/template.h"
#include "ui/common/combo.h"
#include "ui/common/host_wx.h"
#include "ui/common/reportlist.h"
#include "ui/frmMain/modTray.h"

namespace kestrel {

// The open file.
struct Document {
    std::vector<GasTemplate> templates;
    std::wstring path;  // the file opened last with success
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

    // Opens the file whose path stands in the history box.
    void reload();

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
    wxMenu* mnuFile;
    std::map<int, wxButton*> cmdCommands;

  private:
    // Building it (layout.cpp).
    void buildMenu();
    void buildControls();
    wxWindow* buildTemplatePane(wxWindow* parent);
    wxWindow* buildInfoPane(wxWindow* parent);
    wxButton* addButton(wxWindow* parent, Button index, const wxString& caption,
                        const wxString& tip = {});
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
    void run(int item);
    wxMenu* makeFileMenu() const;
    bool busy() const;

    Document document_;
    std::unique_ptr<TrayIcon> tray_;
    bool filling_ = false;  // the tree changes by code, not by the user
};

}  // namespace kestrel
