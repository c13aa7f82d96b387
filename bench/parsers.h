#pragma once

#include <rapidjson/document.h>
#include <simdjson.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <filesystem>
#include <libconfig.h++>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "gas/template.h"
#include "services/files.h"
#include "system/largepages.h"

// The parsers of other formats. Each reads its file of a folder with the corpus when it is
// made. Those that fill records give the blocks of the templates, and fill() hands over what
// is in a block.
namespace kestrel::bench {

using Records = std::vector<GasTemplate>;

// Makes the loader's records from what another parser has read. Text and Comments stay
// empty: those formats do not give them.
class RecordBuilder {
  public:
    // The texts have at most `bytes` together.
    explicit RecordBuilder(std::size_t bytes) {
        std::string room;
        room.reserve(bytes);
        wishForLargePages(room.data(), bytes);
        file_ = std::make_shared<GasFile>(std::move(room), CodePage::utf8());
    }

    void addTemplate(auto&& block) {
        GasTemplate& record = records_.emplace_back();
        const std::uint32_t first = file_->entries();
        level_ = 0;
        fill(std::forward<decltype(block)>(block), *this);
        const std::string name = "Template" + std::to_string(records_.size() - 1);
        if (record.Name.empty()) record.Name = Text(file_->keep(name), file_->page());
        record.Kind = "Template";
        record.Properties = {file_, first, file_->entries() - first};
    }
    void addBlock(std::string_view name, auto&& block) {
        const GasGroup* around = std::exchange(group_, file_->inside(group_, name));
        ++level_;
        add(name, {}, true);
        fill(std::forward<decltype(block)>(block), *this);
        group_ = around;
    }
    void addProperty(std::string_view name, std::string_view value) {
        add(name, value, false);
        if (name == "doc") records_.back().Name = file_->property(file_->entries() - 1).Value;
    }
    Records take() { return std::move(records_); }

  private:
    void add(std::string_view name, std::string_view value, bool isBlock) {
        file_->add({file_->append(name), file_->append(value), group_ == nullptr ? 0 : group_->id,
                    level_, isBlock});
    }

    std::shared_ptr<GasFile> file_;
    Records records_;
    const GasGroup* group_ = nullptr;  // of the block that is open
    std::int16_t level_ = 0;
};

struct SimdjsonTree : simdjson::dom::parser {
    explicit SimdjsonTree(const std::filesystem::path& folder) {
        if (load(folder / "corpus.json").error() != simdjson::SUCCESS) std::abort();
    }
};

// The on-demand interface: no tree is made in between.
struct Simdjson : simdjson::ondemand::parser {
    explicit Simdjson(const std::filesystem::path& folder)
        : bytes(simdjson::padded_string::load((folder / "corpus.json").string())),
          document(iterate(bytes)) {}
    auto blocks() { return document.get_array(); }

    simdjson::padded_string bytes;
    simdjson::ondemand::document document;
};

inline void fill(simdjson::ondemand::object block, RecordBuilder& builder) {
    for (auto field : block) {
        const std::string_view name = field.unescaped_key();
        simdjson::ondemand::value value = field.value();
        if (value.type() == simdjson::ondemand::json_type::object) {
            builder.addBlock(name, value.get_object());
        } else {
            builder.addProperty(name, value.get_string());
        }
    }
}

struct Pugixml : pugi::xml_document {
    explicit Pugixml(const std::filesystem::path& folder) {
        if (!load_file((folder / "corpus.xml").c_str())) std::abort();
    }
    auto blocks() { return child("templates").children(); }
};

inline void fill(const pugi::xml_node& block, RecordBuilder& builder) {
    for (const pugi::xml_attribute& attribute : block.attributes()) {
        builder.addProperty(attribute.name(), attribute.value());
    }
    for (const pugi::xml_node& child : block.children()) builder.addBlock(child.name(), child);
}

struct RapidJson : rapidjson::Document {
    explicit RapidJson(const std::filesystem::path& folder)
        : bytes(readFileBytes((folder / "corpus.json").wstring())) {
        if (ParseInsitu(bytes.data()).HasParseError()) std::abort();
    }
    auto blocks() { return GetArray(); }

    std::string bytes;  // what the tree points into
};

inline void fill(const rapidjson::Value& block, RecordBuilder& builder) {
    const auto text = [](const rapidjson::Value& value) {
        return std::string_view(value.GetString(), value.GetStringLength());
    };
    for (const auto& [name, value] : block.GetObject()) {
        if (value.IsObject()) {
            builder.addBlock(text(name), value);
        } else {
            builder.addProperty(text(name), text(value));
        }
    }
}

struct Libconfig : libconfig::Config {
    explicit Libconfig(const std::filesystem::path& folder) {
        readFile((folder / "corpus.cfg").c_str());
    }
    const libconfig::Setting& blocks() { return lookup("templates"); }
};

inline void fill(const libconfig::Setting& block, RecordBuilder& builder) {
    for (const libconfig::Setting& setting : block) {
        if (setting.isGroup()) {
            builder.addBlock(setting.getName(), setting);
        } else {
            builder.addProperty(setting.getName(), setting.c_str());
        }
    }
}

}  // namespace kestrel::bench
