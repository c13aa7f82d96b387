#include "ui/common/nodemodel_gtk.h"

#include <bit>

namespace kestrel {
namespace {

struct NodeModel {
    GObject base;
    const Nodes* nodes;
};
struct NodeModelClass {
    GObjectClass base;
};

const Nodes& nodesOf(GtkTreeModel* model) {
    return *reinterpret_cast<NodeModel*>(model)->nodes;
}

gboolean setChild(const Nodes& nodes, GtkTreeIter* iter, std::size_t parent, std::size_t index) {
    const bool found = index < nodes.count(parent);
    iter->stamp = found ? 1 : 0;
    iter->user_data = found ? std::bit_cast<gpointer>(nodes.child(parent, index)) : nullptr;
    return found ? TRUE : FALSE;
}

void implementModel(gpointer interface, gpointer) {
    auto* model = static_cast<GtkTreeModelIface*>(interface);
    model->get_flags = [](GtkTreeModel* self) {
        return static_cast<GtkTreeModelFlags>(
            GTK_TREE_MODEL_ITERS_PERSIST |
            (nodesOf(self).isFlat() ? GTK_TREE_MODEL_LIST_ONLY : GtkTreeModelFlags{}));
    };
    model->get_n_columns = [](GtkTreeModel* self) {
        return static_cast<int>(nodesOf(self).columns());
    };
    model->get_column_type = [](GtkTreeModel*, int) -> GType { return G_TYPE_STRING; };
    model->get_iter = [](GtkTreeModel* self, GtkTreeIter* iter, GtkTreePath* path) -> gboolean {
        const int depth = gtk_tree_path_get_depth(path);
        const int* indices = gtk_tree_path_get_indices(path);
        std::size_t parent = kRoot;
        for (int i = 0; i < depth; ++i) {
            if (!setChild(nodesOf(self), iter, parent, static_cast<std::size_t>(indices[i]))) {
                return FALSE;
            }
            parent = nodeOf(iter);
        }
        return depth > 0 ? TRUE : FALSE;
    };
    model->get_path = [](GtkTreeModel* self, GtkTreeIter* iter) {
        return pathOf(nodesOf(self), nodeOf(iter));
    };
    model->get_value = [](GtkTreeModel* self, GtkTreeIter* iter, int column, GValue* value) {
        g_value_init(value, G_TYPE_STRING);
        const wxString text = nodesOf(self).textOf(nodeOf(iter), static_cast<std::size_t>(column));
        g_value_set_string(value, text.utf8_str());
    };
    model->iter_next = [](GtkTreeModel* self, GtkTreeIter* iter) {
        const Nodes& nodes = nodesOf(self);
        const std::size_t node = nodeOf(iter);
        return setChild(nodes, iter, nodes.parentOf(node), nodes.indexOf(node) + 1);
    };
    model->iter_children = [](GtkTreeModel* self, GtkTreeIter* iter, GtkTreeIter* parent) {
        return setChild(nodesOf(self), iter, nodeOf(parent), 0);
    };
    model->iter_has_child = [](GtkTreeModel* self, GtkTreeIter* iter) -> gboolean {
        return nodesOf(self).count(nodeOf(iter)) > 0 ? TRUE : FALSE;
    };
    model->iter_n_children = [](GtkTreeModel* self, GtkTreeIter* iter) {
        return static_cast<int>(nodesOf(self).count(nodeOf(iter)));
    };
    model->iter_nth_child = [](GtkTreeModel* self, GtkTreeIter* iter, GtkTreeIter* parent,
                               int index) {
        return setChild(nodesOf(self), iter, nodeOf(parent), static_cast<std::size_t>(index));
    };
    model->iter_parent = [](GtkTreeModel* self, GtkTreeIter* iter, GtkTreeIter* child) -> gboolean {
        const std::size_t parent = nodesOf(self).parentOf(nodeOf(child));
        iter->stamp = 1;
        iter->user_data = std::bit_cast<gpointer>(parent);
        return parent != kRoot ? TRUE : FALSE;
    };
}

GType modelType() {
    static const GType type = [] {
        const GType made =
            g_type_register_static_simple(G_TYPE_OBJECT, "KestrelNodeModel", sizeof(NodeModelClass),
                                          nullptr, sizeof(NodeModel), nullptr, GTypeFlags{});
        const GInterfaceInfo info{implementModel, nullptr, nullptr};
        g_type_add_interface_static(made, GTK_TYPE_TREE_MODEL, &info);
        return made;
    }();
    return type;
}

}  // namespace

std::size_t nodeOf(const GtkTreeIter* iter) {
    return iter == nullptr ? kRoot : std::bit_cast<std::size_t>(iter->user_data);
}

GtkTreePath* pathOf(const Nodes& nodes, std::size_t node) {
    GtkTreePath* path = gtk_tree_path_new();
    for (; node != kRoot; node = nodes.parentOf(node)) {
        gtk_tree_path_prepend_index(path, static_cast<int>(nodes.indexOf(node)));
    }
    return path;
}

GtkTreeModel* makeModel(const Nodes& nodes) {
    auto* model = static_cast<NodeModel*>(g_object_new(modelType(), nullptr));
    model->nodes = &nodes;
    return GTK_TREE_MODEL(model);
}

}  // namespace kestrel
