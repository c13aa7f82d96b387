#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "corpus.h"
#include "services/pagetext.h"

namespace kestrel::bench {
namespace {

// splitmix64: the same numbers everywhere.
class Random {
  public:
    std::uint64_t next() {
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(next() % limit); }
    std::size_t between(std::size_t low, std::size_t high) { return low + below(high - low + 1); }
    bool chance(std::size_t percent) { return below(100) < percent; }

  private:
    std::uint64_t state_ = 20021101;
};

struct Property {
    std::string name;
    std::string value;  // UTF-8
};

// A template or a sub-block. Its properties precede its sub-blocks, so that
// formats that keep the two apart hold them in the same order.
struct Node {
    std::string name;
    std::vector<Property> properties;
    std::vector<Node> blocks;
};

constexpr std::array<std::string_view, 24> kBlockNames = {
    "look", "body",   "collide", "break", "cargo",  "contents", "use",   "trade",
    "fire", "smoke",  "mooring", "work",  "hours",  "sway",     "door",  "hull",
    "crew", "patrol", "senses",  "mind",  "traits", "talk",     "route", "sounds"};
constexpr std::array<std::string_view, 40> kPropertyNames = {
    "model",    "texture",  "scale",    "weight",       "floats",     "shape",     "radius",
    "height",   "friction", "strength", "pieces",       "slots",      "locked",    "key",
    "table",    "rolls",    "verb",     "uses",         "price",      "markup",    "fuel",
    "spread",   "color",    "range",    "flicker",      "lit_from",   "lit_until", "speed",
    "turn",     "draught",  "least",    "most",         "driven_by",  "outfit",    "health",
    "greeting", "courage",  "sound",    "casts_shadow", "description"};
constexpr std::array<std::string_view, 16> kWords = {
    "oak",   "iron",        "quay",   "lantern", "rope", "herring", "salt",  "harbour",
    "crate", "caf\xC3\xA9", "anchor", "tide",    "gull", "watch",   "plank", "copper"};

class Inventor {
  public:
    Node makeTemplate(std::size_t index) {
        Node node;
        node.name = word() + "_" + std::to_string(index);
        if (random_.chance(90)) node.properties.push_back({"doc", words(2, 3)});
        if (random_.chance(60)) node.properties.push_back({"screen_name", words(1, 3)});
        if (random_.chance(80)) {
            node.properties.push_back({"specializes", "base_" + word()});
        }
        addProperties(node, random_.between(1, 5));
        addBlocks(node, random_.between(2, 6), 1);
        return node;
    }

    Random& random() { return random_; }
    std::string words(std::size_t least, std::size_t most) {
        std::string text = word();
        for (std::size_t count = random_.between(least, most); count > 1; --count) {
            text += ' ' + word();
        }
        return text;
    }

  private:
    std::string word() { return std::string(kWords[random_.below(kWords.size())]); }

    std::string number() {
        return std::to_string(random_.below(200)) + "." + std::to_string(random_.below(100));
    }

    std::string value() {
        switch (random_.below(6)) {
            case 0:
                return std::to_string(random_.below(1000));
            case 1:
                return number();
            case 2:
                return random_.chance(50) ? "true" : "false";
            case 3:
                return "m_" + word() + "_" + std::to_string(random_.below(100));
            case 4:
                return number() + "," + number() + "," + number();
            default:
                return words(2, 7);
        }
    }

    // Names do not repeat within a block: most formats forbid it.
    void addProperties(Node& node, std::size_t count) {
        std::size_t at = random_.below(kPropertyNames.size());
        for (; count > 0; --count, at = (at + 7) % kPropertyNames.size()) {
            node.properties.push_back({std::string(kPropertyNames[at]), value()});
        }
    }

    void addBlocks(Node& node, std::size_t count, int depth) {
        std::size_t at = random_.below(kBlockNames.size());
        for (; count > 0; --count, at = (at + 5) % kBlockNames.size()) {
            Node& block = node.blocks.emplace_back();
            block.name = kBlockNames[at];
            addProperties(block, random_.between(2, 8));
            if (depth < 4 && random_.chance(35)) addBlocks(block, random_.between(1, 2), depth + 1);
        }
    }

    Random random_;
};

class GasWriter {
  public:
    explicit GasWriter(Inventor& inventor) : inventor_(inventor) {}

    void write(std::string& out, const Node& node) {
        out.append("[t:template,n:").append(node.name).append("]\r\n");
        body(out, node, 0);
        out += "\r\n";
    }

  private:
    void body(std::string& out, const Node& node, std::size_t depth) {
        line(out, depth, "{");
        for (const Property& property : node.properties) write(out, property, depth + 1);
        for (const Node& block : node.blocks) {
            line(out, depth + 1, "[" + block.name + "]");
            body(out, block, depth + 1);
        }
        line(out, depth, "}");
    }

    void write(std::string& out, const Property& property, std::size_t depth) {
        if (inventor_.random().chance(6)) line(out, depth, "// " + inventor_.words(3, 9));
        const bool bare = property.value.find_first_not_of("0123456789.") == std::string::npos;
        std::string text = property.name + " = ";
        text += bare ? property.value : '"' + property.value + '"';
        text += ';';
        if (inventor_.random().chance(4)) text += "\t// " + inventor_.words(2, 4);
        line(out, depth, text);
    }

    static void line(std::string& out, std::size_t depth, std::string_view text) {
        out.append(depth, '\t').append(text).append("\r\n");
    }

    Inventor& inventor_;
};

void writeJson(std::string& out, const Node& node, std::size_t depth) {
    out += "{";
    const char* separator = "\n";
    for (const Property& property : node.properties) {
        out.append(separator).append(depth, '\t');
        out.append("\"").append(property.name).append("\": \"").append(property.value) += '"';
        separator = ",\n";
    }
    for (const Node& block : node.blocks) {
        out.append(separator).append(depth, '\t');
        out.append("\"").append(block.name).append("\": ");
        writeJson(out, block, depth + 1);
        separator = ",\n";
    }
    out.append("\n").append(depth - 1, '\t') += '}';
}

void writeXml(std::string& out, const Node& node, std::string_view name, std::size_t depth) {
    out.append(depth, '\t').append("<").append(name);
    for (const Property& property : node.properties) {
        out.append(" ").append(property.name).append("=\"").append(property.value) += '"';
    }
    if (node.blocks.empty()) {
        out += "/>\n";
        return;
    }
    out += ">\n";
    for (const Node& block : node.blocks) writeXml(out, block, block.name, depth + 1);
    out.append(depth, '\t').append("</").append(name).append(">\n");
}

void writeLibconfig(std::string& out, const Node& node, std::size_t depth) {
    out += "{\n";
    for (const Property& property : node.properties) {
        out.append(depth, '\t').append(property.name).append(" = \"");
        out.append(property.value).append("\";\n");
    }
    for (const Node& block : node.blocks) {
        out.append(depth, '\t').append(block.name).append(" = ");
        writeLibconfig(out, block, depth + 1);
        out += ";\n";
    }
    out.append(depth - 1, '\t') += '}';
}

// A file that is written in large pieces.
class Output {
  public:
    explicit Output(const std::filesystem::path& path) : file_(path, std::ios::binary) {
        file_.exceptions(std::ios::badbit | std::ios::failbit);
    }
    std::string text;  // not yet written

    std::size_t size() const { return written_ + text.size(); }
    void flush(std::size_t atLeast) {
        if (text.size() < atLeast) return;
        file_.write(text.data(), static_cast<std::streamsize>(text.size()));
        written_ += text.size();
        text.clear();
    }

  private:
    std::ofstream file_;
    std::size_t written_ = 0;
};

// The code page has its own byte for what UTF-8 writes as two.
void appendNarrow(std::string& out, std::string& utf8) {
    out += narrow(fromUtf8(utf8));
    utf8.clear();
}

}  // namespace

std::filesystem::path corpusFile(const std::filesystem::path& folder, Format format) {
    return folder / kCorpusFiles[static_cast<std::size_t>(format)];
}

void writeCorpus(const std::filesystem::path& folder, std::size_t gasBytes) {
    Output gas(corpusFile(folder, Format::gas));
    Output json(corpusFile(folder, Format::json));
    Output xml(corpusFile(folder, Format::xml));
    Output config(corpusFile(folder, Format::libconfig));
    Inventor inventor;
    GasWriter gasWriter(inventor);
    json.text = "[";
    xml.text = "<templates>\n";
    config.text = "templates = (";
    std::string utf8;
    for (std::size_t index = 0; gas.size() < gasBytes; ++index) {
        Node node = inventor.makeTemplate(index);
        gasWriter.write(utf8, node);
        appendNarrow(gas.text, utf8);
        // A `.gas` header gives its name as the block's first property.
        node.properties.insert(node.properties.begin(), {"name", node.name});
        json.text += index == 0 ? "\n\t" : ",\n\t";
        writeJson(json.text, node, 2);
        writeXml(xml.text, node, "template", 1);
        config.text += index == 0 ? "\n\t" : ",\n\t";
        writeLibconfig(config.text, node, 2);
        for (Output* output : {&gas, &json, &xml, &config}) output->flush(std::size_t{1} << 20U);
    }
    json.text += "\n]\n";
    xml.text += "</templates>\n";
    config.text += "\n);\n";
    for (Output* output : {&gas, &json, &xml, &config}) output->flush(0);
}

}  // namespace kestrel::bench
