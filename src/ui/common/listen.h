#pragma once

#include <wx/event.h>

#include <type_traits>

namespace kestrel {

// Runs `body`, which takes the event or nothing, at each event of that type that reaches
// `source`, and lets whoever else handles it do so.
template <class Type, class Body>
void listen(wxEvtHandler& source, const Type& type, Body body) {
    source.Bind(type, [body](typename Type::EventClass& event) {
        event.Skip();
        if constexpr (std::is_invocable_v<Body>) {
            body();
        } else {
            body(event);
        }
    });
}

}  // namespace kestrel
