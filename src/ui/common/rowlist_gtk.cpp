#include "ui/common/rowlist.h"

#include <gtk/gtk.h>
#include <wx/control.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "ui/common/listen.h"
#include "ui/common/nodemodel_gtk.h"

namespace kestrel {
namespace {

// A selection that has not the keyboard is grey, whatever the theme makes of it.
constexpr const char* kStyle =
    "treeview.view:selected:not(:focus) {"
    " background-color: mix(@theme_bg_color, @theme_fg_color, 0.22);"
    " color: @theme_text_color; }";

void addStyle(GtkWidget* widget) {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, kStyle, -1, nullptr);
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget),
                                   GTK_STYLE_PROVIDER(provider),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
}

struct FreePath {
    void operator()(GtkTreePath* path) const { gtk_tree_path_free(path); }
};
using Path = std::unique_ptr<GtkTreePath, FreePath>;

// The toolkit's tree view as a control of the windows.
class TreeView : public wxControl, public Nodes {
  public:
    TreeView(wxWindow* parent, const wxString& name) {
        if (!PreCreation(parent, wxDefaultPosition, wxDefaultSize) ||
            !CreateBase(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_THEME,
                        wxDefaultValidator, name)) {
            return;
        }
        m_widget = gtk_scrolled_window_new(nullptr, nullptr);
        g_object_ref(m_widget);
        GTKScrolledWindowSetBorder(m_widget, static_cast<int>(GetWindowStyle()));
        view_ = GTK_TREE_VIEW(gtk_tree_view_new());
        m_focusWidget = GTK_WIDGET(view_);
        gtk_container_add(GTK_CONTAINER(m_widget), m_focusWidget);
        gtk_widget_show(m_focusWidget);
        gtk_tree_selection_set_mode(gtk_tree_view_get_selection(view_), GTK_SELECTION_BROWSE);
        gtk_tree_view_set_search_column(view_, 0);
        addStyle(m_focusWidget);
        m_parent->DoAddChild(this);
        PostCreation(wxDefaultSize);
        connect();
    }

  protected:
    // To be called by the destructor of what has the nodes: the view asks for them until
    // it has no model.
    void endView() {
        GTKDisconnect(view_);
        GTKDisconnect(gtk_tree_view_get_selection(view_));
        gtk_tree_view_set_model(view_, nullptr);
    }

    virtual void selectedByUser() = 0;
    virtual void activated() = 0;

    GtkTreeView* view() const { return view_; }
    bool isChanging() const { return changing_; }

    // Runs `change`, whose events are the program's own.
    template <class Change>
    void change(Change change) {
        const bool before = std::exchange(changing_, true);
        change();
        changing_ = before;
    }

    // Shows what `renew` makes of the nodes; the view holds none of them meanwhile.
    template <class Renew>
    void showAnew(Renew renew) {
        change([&] {
            gtk_tree_view_set_model(view_, nullptr);
            renew();
            GtkTreeModel* model = makeModel(*this);
            gtk_tree_view_set_model(view_, model);
            g_object_unref(model);
        });
    }

    void selectNode(std::size_t node) {
        change([&] {
            const Path path(pathOf(*this, node));
            gtk_tree_view_expand_to_path(view_, path.get());
            gtk_tree_view_set_cursor(view_, path.get(), nullptr, FALSE);
        });
    }

    void unselect() {
        change([this] { gtk_tree_selection_unselect_all(gtk_tree_view_get_selection(view_)); });
    }

    std::size_t selectedNode() const {
        GtkTreeIter iter;
        const bool found =
            gtk_tree_selection_get_selected(gtk_tree_view_get_selection(view_), nullptr, &iter);
        return found ? nodeOf(&iter) : kRoot;
    }

    // The node at a place below the headers; kRoot where there is none.
    std::size_t nodeAt(const wxPoint& place) const {
        GtkTreePath* found = nullptr;
        gtk_tree_view_get_path_at_pos(view_, place.x, place.y, &found, nullptr, nullptr, nullptr);
        const Path path(found);
        GtkTreeIter iter;
        return path && gtk_tree_model_get_iter(gtk_tree_view_get_model(view_), &iter, path.get())
                   ? nodeOf(&iter)
                   : kRoot;
    }

    GtkWidget* GetConnectWidget() override { return GTK_WIDGET(view_); }
    GdkWindow* GTKGetWindow(wxArrayGdkWindows&) const override {
        return gtk_tree_view_get_bin_window(view_);
    }

  private:
    void connect() {
        g_signal_connect_after(gtk_tree_view_get_selection(view_), "changed",
                               G_CALLBACK(+[](GtkTreeSelection*, TreeView* self) {
                                   if (!self->changing_ && self->selectedNode() != kRoot) {
                                       self->selectedByUser();
                                   }
                               }),
                               this);
        g_signal_connect_after(view_, "row-activated",
                               G_CALLBACK(+[](GtkTreeView*, GtkTreePath*, GtkTreeViewColumn*,
                                              TreeView* self) { self->activated(); }),
                               this);
        // A menu is about the row that it opens over.
        listen(*this, wxEVT_RIGHT_DOWN, [this](const wxMouseEvent& event) {
            const std::size_t node = nodeAt(event.GetPosition());
            if (node != kRoot && node != selectedNode()) {
                selectNode(node);
                selectedByUser();
            }
            SetFocus();
        });
    }

    GtkTreeView* view_ = nullptr;
    bool changing_ = false;
};

class RowListGtk final : public TreeView, public RowList {
  public:
    RowListGtk(wxWindow* parent, const wxString& name, const std::vector<std::wstring>& headers)
        : TreeView(parent, name) {
        for (std::size_t i = 0; i < headers.size(); ++i) addColumn(i, headers[i]);
        gtk_tree_view_set_fixed_height_mode(view(), TRUE);
        setRowCount(0);
    }
    ~RowListGtk() override {
        for (GtkTreeViewColumn* column : columns_) GTKDisconnect(column);
        endView();
    }

    wxWindow& window() override { return *this; }

    void setRowCount(std::size_t count) override {
        showAnew([&] { count_ = count; });
    }
    void select(std::optional<std::size_t> row) override { row ? selectNode(*row) : unselect(); }
    void alignRight(std::size_t column) override {
        GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(columns_.at(column)));
        g_object_set(cells->data, "xalign", 1.0F, nullptr);
        g_list_free(cells);
        gtk_tree_view_column_set_alignment(columns_.at(column), 1);
    }
    void showSorted(std::size_t column, bool ascending) override {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            gtk_tree_view_column_set_sort_indicator(columns_[i], i == column ? TRUE : FALSE);
        }
        gtk_tree_view_column_set_sort_order(columns_.at(column),
                                            ascending ? GTK_SORT_ASCENDING : GTK_SORT_DESCENDING);
    }

    int columnWidth(std::size_t column) const override {
        return gtk_tree_view_column_get_fixed_width(columns_.at(column));
    }
    void setColumnWidth(std::size_t column, int width) override {
        change([&] { gtk_tree_view_column_set_fixed_width(columns_.at(column), width); });
    }
    // The view itself gets its width after the control. What it leaves to the edges stays the same.
    int width() const override {
        constexpr int kEdges = 2;
        const int edges = gtk_widget_get_allocated_width(m_widget) -
                          gtk_widget_get_allocated_width(GTK_WIDGET(view()));
        return GetSize().x - std::max(edges, kEdges);
    }

  private:
    void addColumn(std::size_t index, const std::wstring& header) {
        GtkCellRenderer* renderer = gtk_cell_renderer_text_new();
        g_object_set(renderer, "ellipsize", PANGO_ELLIPSIZE_END, "single-paragraph-mode", TRUE,
                     "ypad", 1, nullptr);
        GtkTreeViewColumn* column = gtk_tree_view_column_new_with_attributes(
            wxString(header).utf8_str(), renderer, "text", static_cast<int>(index), nullptr);
        gtk_tree_view_column_set_sizing(column, GTK_TREE_VIEW_COLUMN_FIXED);
        gtk_tree_view_column_set_resizable(column, TRUE);
        // Below it the theme's button has no room for its own edges.
        gtk_tree_view_column_set_min_width(column, 20);
        gtk_tree_view_column_set_clickable(column, TRUE);
        gtk_tree_view_append_column(view(), column);
        columns_.push_back(column);
        g_signal_connect(column, "clicked",
                         G_CALLBACK(+[](GtkTreeViewColumn* clicked, RowListGtk* self) {
                             self->headerClicked(clicked);
                         }),
                         this);
        g_signal_connect(column, "notify::fixed-width",
                         G_CALLBACK(+[](GObject*, GParamSpec*, RowListGtk* self) {
                             if (!self->isChanging() && self->onColumnDragged) {
                                 self->onColumnDragged();
                             }
                         }),
                         this);
    }

    void headerClicked(const GtkTreeViewColumn* clicked) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (columns_[i] == clicked && onHeader) onHeader(i);
        }
    }

    void selectedByUser() override {
        if (onSelect) onSelect(selectedNode());
    }
    void activated() override {
        if (onActivate) onActivate();
    }

    std::size_t columns() const override { return columns_.size(); }
    std::size_t count(std::size_t parent) const override { return parent == kRoot ? count_ : 0; }
    std::size_t child(std::size_t, std::size_t index) const override { return index; }
    std::size_t parentOf(std::size_t) const override { return kRoot; }
    std::size_t indexOf(std::size_t node) const override { return node; }
    wxString textOf(std::size_t node, std::size_t column) const override {
        return text ? text(node, column) : wxString();
    }
    bool isFlat() const override { return true; }

    std::vector<GtkTreeViewColumn*> columns_;
    std::size_t count_ = 0;
};

class NodeTreeGtk final : public TreeView, public NodeTree {
  public:
    NodeTreeGtk(wxWindow* parent, const wxString& name) : TreeView(parent, name) {
        gtk_tree_view_set_headers_visible(view(), FALSE);
        gtk_tree_view_insert_column_with_attributes(view(), -1, "", gtk_cell_renderer_text_new(),
                                                    "text", 0, nullptr);
        setNodes({}, false);
        Bind(wxEVT_KEY_DOWN, &NodeTreeGtk::keyPressed, this);
        listen(*this, wxEVT_LEFT_DOWN, [this](const wxMouseEvent& event) {
            const std::size_t node = nodeAt(event.GetPosition());
            if (node != kRoot && node == selectedNode()) activated();
        });
    }

    ~NodeTreeGtk() override {
        if (scrolling_ != 0) g_source_remove(scrolling_);
        endView();
    }

    wxWindow& window() override { return *this; }

    void setNodes(std::vector<Node> nodes, bool open) override {
        showAnew([&] { take(std::move(nodes)); });
        change([&] {
            const Path first(gtk_tree_path_new_first());
            if (open) {
                gtk_tree_view_expand_all(view());
            } else {
                gtk_tree_view_expand_row(view(), first.get(), FALSE);
            }
        });
    }

    void select(std::size_t node) override {
        selectNode(node);
        shown_ = node;
        if (scrolling_ != 0) return;
        // After the view has laid itself out, and gone to the begin of its column.
        const auto scroll = [](gpointer self) -> gboolean {
            static_cast<NodeTreeGtk*>(self)->scrollToShown();
            return G_SOURCE_REMOVE;
        };
        scrolling_ = g_idle_add_full(G_PRIORITY_LOW, scroll, this, nullptr);
    }

    std::optional<std::size_t> selected() const override {
        const std::size_t node = selectedNode();
        return node == kRoot ? std::nullopt : std::optional(node);
    }

  private:
    void take(std::vector<Node> nodes) {
        nodes_ = std::move(nodes);
        children_.assign(nodes_.size() + 1, {});
        index_.clear();
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            auto& siblings = childrenOf(nodes_[i].parent);
            index_.push_back(siblings.size());
            siblings.push_back(i);
        }
    }

    const std::vector<std::size_t>& childrenOf(std::size_t parent) const {
        return parent == kRoot ? children_.back() : children_[parent];
    }
    std::vector<std::size_t>& childrenOf(std::size_t parent) {
        return parent == kRoot ? children_.back() : children_[parent];
    }

    void scrollToShown() {
        scrolling_ = 0;
        if (shown_ >= nodes_.size() || !gtk_widget_get_realized(GTK_WIDGET(view()))) return;
        const auto& children = childrenOf(shown_);
        if (!children.empty()) scrollTo(children.front());
        scrollTo(shown_);
    }

    // Down to the node, and to the side where it stands deep in the tree.
    void scrollTo(std::size_t node) {
        const Path path(pathOf(*this, node));
        gtk_tree_view_scroll_to_cell(view(), path.get(), nullptr, FALSE, 0, 0);
        GtkTreeViewColumn* column = gtk_tree_view_get_column(view(), 0);
        GdkRectangle cell{};
        gtk_tree_view_get_cell_area(view(), path.get(), column, &cell);
        GtkAdjustment* side = gtk_scrollable_get_hadjustment(GTK_SCROLLABLE(view()));
        const double half = gtk_adjustment_get_page_size(side) / 2;
        // This call alone ends what the view slides by itself.
        gtk_adjustment_set_value(side, std::clamp(gtk_adjustment_get_value(side), cell.x - half,
                                                  static_cast<double>(cell.x)));
    }

    // As trees everywhere: to the left closes a node or goes to the one above it.
    void keyPressed(wxKeyEvent& event) {
        const std::size_t node = selectedNode();
        const bool left = event.GetKeyCode() == WXK_LEFT;
        if (node == kRoot || event.HasAnyModifiers() ||
            (!left && event.GetKeyCode() != WXK_RIGHT)) {
            return event.Skip();
        }
        const Path path(pathOf(*this, node));
        if (gtk_tree_view_row_expanded(view(), path.get())) {
            if (left) return void(gtk_tree_view_collapse_row(view(), path.get()));
            selectNode(childrenOf(node).front());
        } else if (left) {
            if (nodes_[node].parent == kRoot) return;
            selectNode(nodes_[node].parent);
        } else {
            return void(gtk_tree_view_expand_row(view(), path.get(), FALSE));
        }
        selectedByUser();
    }

    void selectedByUser() override {
        if (onSelect) onSelect();
    }
    void activated() override {
        if (onPress) onPress();
    }

    std::size_t columns() const override { return 1; }
    std::size_t count(std::size_t parent) const override { return childrenOf(parent).size(); }
    std::size_t child(std::size_t parent, std::size_t index) const override {
        return childrenOf(parent)[index];
    }
    std::size_t parentOf(std::size_t node) const override { return nodes_[node].parent; }
    std::size_t indexOf(std::size_t node) const override { return index_[node]; }
    wxString textOf(std::size_t node, std::size_t) const override { return nodes_[node].label; }
    bool isFlat() const override { return false; }

    std::vector<Node> nodes_;
    std::vector<std::vector<std::size_t>> children_;  // of each node; those of the root at last
    std::vector<std::size_t> index_;
    std::size_t shown_ = 0;
    guint scrolling_ = 0;  // to shown_, when nothing else is to be done
};

}  // namespace

RowList* makeRowList(wxWindow* parent, const wxString& name,
                     const std::vector<std::wstring>& headers) {
    return new RowListGtk(parent, name, headers);
}

NodeTree* makeNodeTree(wxWindow* parent, const wxString& name) {
    return new NodeTreeGtk(parent, name);
}

}  // namespace kestrel
