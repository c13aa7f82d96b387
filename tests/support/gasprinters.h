#pragma once

#include <ostream>

#include "gas/template.h"
#include "support/shown.h"

// How failed expectations show the records of the document model.
namespace kestrel {

inline void PrintTo(const GasProperty& property, std::ostream* out) {
    *out << "{" << test::shown(property.Name) << " = " << test::shown(property.Value) << ", group "
         << test::shown(property.Group.text()) << (property.IsBlock ? ", block" : "") << ", level "
         << property.Level << "}";
}

inline void PrintTo(const GasTemplate& record, std::ostream* out) {
    *out << "{" << test::shown(record.Kind) << " " << test::shown(record.Name);
    for (const GasProperty& property : record.Properties) {
        *out << "\n  ";
        PrintTo(property, out);
    }
    *out << "\n  text " << test::shown(record.Text.wide()) << "\n  comments "
         << test::shown(record.Comments) << "}";
}

}  // namespace kestrel
