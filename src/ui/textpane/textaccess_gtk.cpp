#include "ui/textpane/textaccess.h"

#include <gtk/gtk-a11y.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <string>

#include "ui/common/listen.h"
#include "ui/textpane/textpane.h"

namespace kestrel {
namespace {

// The toolkit draws this control by itself, and assistive programs see an empty panel.
// The object here stands in for it on the accessibility bus. Offsets there count
// characters, those of the pane bytes.
struct TextAccessible {
    GtkWidgetAccessible base;
    TextPane* pane;  // null once it has gone
};

struct Range {
    int begin = 0;  // in bytes
    int end = 0;
};

TextPane* paneOf(gpointer object) {
    return static_cast<TextAccessible*>(object)->pane;
}

int characters(const TextPane& pane, int position) {
    return static_cast<int>(pane.characterAt(position));
}

int countOf(const TextPane& pane) {
    return characters(pane, pane.GetLength());
}

// A negative offset stands for the end.
int positionOf(const TextPane& pane, int offset) {
    return offset < 0 ? pane.GetLength() : pane.positionAt(static_cast<std::size_t>(offset));
}

gchar* copyOf(const TextPane& pane, Range range) {
    const std::string_view bytes = pane.bytes(range.begin, std::max(range.begin, range.end));
    return g_strndup(bytes.data(), bytes.size());
}

Range lineAt(const TextPane& pane, int position) {
    const int line = pane.LineFromPosition(position);
    const int next =
        line + 1 < pane.GetLineCount() ? pane.PositionFromLine(line + 1) : pane.GetLength();
    return {pane.PositionFromLine(line), next};
}

// With the blanks behind it, so that words follow each other without a gap.
Range wordAt(TextPane& pane, int position) {
    const auto behind = [&pane](int at) {
        const int end = std::max(pane.WordEndPosition(at, false), pane.PositionAfter(at));
        return std::min(end, pane.GetLength());
    };
    return {std::min(pane.WordStartPosition(position, false), position), behind(position)};
}

Range unitAt(TextPane& pane, int position, AtkTextGranularity unit) {
    switch (unit) {
        case ATK_TEXT_GRANULARITY_CHAR:
            return {position, std::min(pane.PositionAfter(position), pane.GetLength())};
        case ATK_TEXT_GRANULARITY_WORD:
            return wordAt(pane, position);
        default:
            return lineAt(pane, position);
    }
}

AtkTextGranularity unitOf(AtkTextBoundary boundary) {
    switch (boundary) {
        case ATK_TEXT_BOUNDARY_CHAR:
            return ATK_TEXT_GRANULARITY_CHAR;
        case ATK_TEXT_BOUNDARY_WORD_START:
        case ATK_TEXT_BOUNDARY_WORD_END:
            return ATK_TEXT_GRANULARITY_WORD;
        default:
            return ATK_TEXT_GRANULARITY_LINE;
    }
}

gchar* tell(const TextPane& pane, Range range, gint* start, gint* end) {
    *start = characters(pane, range.begin);
    *end = characters(pane, range.end);
    return copyOf(pane, range);
}

gchar* getText(AtkText* text, gint start, gint end) {
    const TextPane* pane = paneOf(text);
    if (pane == nullptr) return nullptr;
    return copyOf(*pane, {positionOf(*pane, start), positionOf(*pane, end)});
}

gunichar getCharacter(AtkText* text, gint offset) {
    TextPane* pane = paneOf(text);
    return pane == nullptr ? 0 : static_cast<gunichar>(pane->GetCharAt(positionOf(*pane, offset)));
}

gchar* getStringAt(AtkText* text, gint offset, AtkTextGranularity unit, gint* start, gint* end) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return nullptr;
    return tell(*pane, unitAt(*pane, positionOf(*pane, offset), unit), start, end);
}

gchar* getTextAt(AtkText* text, gint offset, AtkTextBoundary boundary, gint* start, gint* end) {
    return getStringAt(text, offset, unitOf(boundary), start, end);
}

gchar* getTextBefore(AtkText* text, gint offset, AtkTextBoundary boundary, gint* start, gint* end) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return nullptr;
    const Range here = unitAt(*pane, positionOf(*pane, offset), unitOf(boundary));
    if (here.begin == 0) return tell(*pane, {0, 0}, start, end);
    return tell(*pane, unitAt(*pane, pane->PositionBefore(here.begin), unitOf(boundary)), start,
                end);
}

gchar* getTextAfter(AtkText* text, gint offset, AtkTextBoundary boundary, gint* start, gint* end) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return nullptr;
    const Range here = unitAt(*pane, positionOf(*pane, offset), unitOf(boundary));
    return tell(*pane, unitAt(*pane, here.end, unitOf(boundary)), start, end);
}

gint getCaret(AtkText* text) {
    const TextPane* pane = paneOf(text);
    return pane == nullptr ? 0 : characters(*pane, pane->GetCurrentPos());
}

gboolean setCaret(AtkText* text, gint offset) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return FALSE;
    pane->GotoPos(positionOf(*pane, offset));
    return TRUE;
}

gint getCount(AtkText* text) {
    const TextPane* pane = paneOf(text);
    return pane == nullptr ? 0 : countOf(*pane);
}

gint getSelections(AtkText* text) {
    const TextPane* pane = paneOf(text);
    return pane != nullptr && pane->hasSelection() ? 1 : 0;
}

gchar* getSelection(AtkText* text, gint, gint* start, gint* end) {
    const TextPane* pane = paneOf(text);
    if (pane == nullptr) return nullptr;
    return tell(*pane, {pane->GetSelectionStart(), pane->GetSelectionEnd()}, start, end);
}

gboolean select(AtkText* text, gint start, gint end) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return FALSE;
    pane->SetSelection(positionOf(*pane, start), positionOf(*pane, end));
    return TRUE;
}

gboolean setSelection(AtkText* text, gint, gint start, gint end) {
    return select(text, start, end);
}

gboolean removeSelection(AtkText* text, gint) {
    return setCaret(text, getCaret(text));
}

void getExtents(AtkText* text, gint offset, gint* x, gint* y, gint* width, gint* height,
                AtkCoordType type) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return;
    const int position = positionOf(*pane, offset);
    const wxPoint place = pane->PointFromPosition(position);
    int left = 0;
    int top = 0;
    atk_component_get_extents(ATK_COMPONENT(text), &left, &top, width, height, type);
    *x = left + place.x;
    *y = top + place.y;
    *width = std::max(1, pane->PointFromPosition(pane->PositionAfter(position)).x - place.x);
    *height = pane->TextHeight(pane->LineFromPosition(position));
}

gint getOffsetAt(AtkText* text, gint x, gint y, AtkCoordType type) {
    TextPane* pane = paneOf(text);
    if (pane == nullptr) return -1;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    atk_component_get_extents(ATK_COMPONENT(text), &left, &top, &width, &height, type);
    return characters(*pane, pane->PositionFromPoint(wxPoint(x - left, y - top)));
}

void implementText(gpointer interface, gpointer) {
    auto* text = static_cast<AtkTextIface*>(interface);
    text->get_text = getText;
    text->get_character_at_offset = getCharacter;
    text->get_string_at_offset = getStringAt;
    text->get_text_at_offset = getTextAt;
    text->get_text_before_offset = getTextBefore;
    text->get_text_after_offset = getTextAfter;
    text->get_caret_offset = getCaret;
    text->set_caret_offset = setCaret;
    text->get_character_count = getCount;
    text->get_n_selections = getSelections;
    text->get_selection = getSelection;
    text->add_selection = select;
    text->set_selection = setSelection;
    text->remove_selection = removeSelection;
    text->get_character_extents = getExtents;
    text->get_offset_at_point = getOffsetAt;
}

gpointer& parentClass() {
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the type system's.
    static gpointer parent = nullptr;
    return parent;
}

AtkStateSet* statesOf(AtkObject* object) {
    AtkStateSet* states = ATK_OBJECT_CLASS(parentClass())->ref_state_set(object);
    const TextPane* pane = paneOf(object);
    if (pane == nullptr) return states;
    atk_state_set_add_state(states, ATK_STATE_MULTI_LINE);
    atk_state_set_add_state(states, ATK_STATE_SELECTABLE_TEXT);
    if (pane->canEdit()) atk_state_set_add_state(states, ATK_STATE_EDITABLE);
    return states;
}

GType accessibleType() {
    static const GType type = [] {
        const GTypeInfo info{sizeof(GtkWidgetAccessibleClass),
                             nullptr,
                             nullptr,
                             [](gpointer own, gpointer) {
                                 parentClass() = g_type_class_peek_parent(own);
                                 static_cast<AtkObjectClass*>(own)->ref_state_set = statesOf;
                             },
                             nullptr,
                             nullptr,
                             sizeof(TextAccessible),
                             0,
                             nullptr,
                             nullptr};
        const GType made = g_type_register_static(GTK_TYPE_WIDGET_ACCESSIBLE,
                                                  "KestrelTextAccessible", &info, GTypeFlags{});
        const GInterfaceInfo text{implementText, nullptr, nullptr};
        g_type_add_interface_static(made, ATK_TYPE_TEXT, &text);
        return made;
    }();
    return type;
}

GQuark ownQuark() {
    return g_quark_from_static_string("kestrel-accessible");
}

using GetAccessible = AtkObject* (*)(GtkWidget*);

GetAccessible& usualAccessible() {
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the type system's.
    static GetAccessible usual = nullptr;
    return usual;
}

AtkObject* accessibleOf(GtkWidget* widget) {
    auto* own = static_cast<AtkObject*>(g_object_get_qdata(G_OBJECT(widget), ownQuark()));
    return own != nullptr ? own : usualAccessible()(widget);
}

void forget(gpointer object) {
    static_cast<TextAccessible*>(object)->pane = nullptr;
    gtk_accessible_set_widget(GTK_ACCESSIBLE(object), nullptr);
    g_object_unref(object);
}

AtkObject* attach(TextPane& pane) {
    GtkWidget* widget = pane.m_wxwindow;
    GtkWidgetClass* type = GTK_WIDGET_GET_CLASS(widget);
    if (type->get_accessible != accessibleOf) {
        usualAccessible() = type->get_accessible;
        type->get_accessible = accessibleOf;
    }
    auto* object =
        static_cast<TextAccessible*>(g_object_new(accessibleType(), "widget", widget, nullptr));
    object->pane = &pane;
    g_object_set_qdata_full(G_OBJECT(widget), ownQuark(), object, forget);
    atk_object_initialize(ATK_OBJECT(object), widget);
    atk_object_set_role(ATK_OBJECT(object), ATK_ROLE_TEXT);
    return ATK_OBJECT(object);
}

}  // namespace

void makeReadable(TextPane& pane) {
    AtkObject* object = attach(pane);
    pane.onTextChanged = [object](bool inserted, std::size_t at, const std::string& text) {
        const auto length = static_cast<gint>(g_utf8_strlen(text.c_str(), -1));
        g_signal_emit_by_name(object, inserted ? "text-insert" : "text-remove",
                              static_cast<gint>(at), length, text.c_str());
    };
    listen(pane, wxEVT_STC_UPDATEUI, [object](const wxStyledTextEvent& event) {
        if ((event.GetUpdated() & wxSTC_UPDATE_SELECTION) == 0) return;
        g_signal_emit_by_name(object, "text-caret-moved", getCaret(ATK_TEXT(object)));
        g_signal_emit_by_name(object, "text-selection-changed");
    });
}

}  // namespace kestrel
