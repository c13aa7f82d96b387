#include "view/chain.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/keys.h"
#include "base/paths.h"
#include "base/text.h"
#include "gas/load.h"
#include "services/guard.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "services/program.h"
#include "system/letters.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kFileList = L"spec.his";
constexpr std::wstring_view kNoSource = L"Source not available.";

// Some 16 MB: far more than any set of files has.
constexpr std::size_t kMostKnownValues = 2'000'000;

std::size_t hashOf(std::wstring_view text) noexcept {
    return std::hash<std::wstring_view>()(text);
}

// The hash of every value by which findSource() finds a record.
std::vector<std::size_t> sourceValues(const std::vector<GasTemplate>& templates) {
    std::vector<std::size_t> values;
    for (const GasTemplate& record : templates) {
        if (record.Name.empty()) continue;
        for (const GasProperty& property : record.Properties) {
            if (property.Name == "doc" || property.Name == "name") {
                values.push_back(hashOf(property.Value.wide()));
            }
        }
    }
    std::ranges::sort(values);
    return values;
}

}  // namespace

std::wstring chainName(const GasTemplate& record) {
    const std::wstring name = gstrFindPropertyVal(record, L"name");
    return name.empty() ? record.Name.wide() : name;
}

bool ChainDocument::load(const std::wstring& file) {
    const std::optional<FileStamp> stamp = fileStamp(file);
    std::vector<GasTemplate> templates;
    std::wstring path = file;
    problem_.clear();
    const Silence silence;
    if (!gblnLoadGas(path, templates, nullptr)) {
        problem_ = silence.failure() ? silence.failure()->description() : kNoGasData;
        return false;
    }
    file_ = file;
    index_.reset();
    templates_ = std::move(templates);
    stamp_ = stamp;
    remember();
    return true;
}

void ChainDocument::remember() {
    if (!stamp_ || !isSettled(*stamp_)) return;
    Known& known = known_[file_];
    knownValues_ -= known.values.size();
    known = {*stamp_, sourceValues(templates_)};
    knownValues_ += known.values.size();
    if (knownValues_ <= kMostKnownValues) return;
    known_.clear();
    knownValues_ = 0;
}

bool ChainDocument::lacks(const std::wstring& file, std::wstring_view name) const {
    const auto known = known_.find(file);
    return known != known_.end() && known->second.stamp == fileStamp(file) &&
           !std::ranges::binary_search(known->second.values, hashOf(name));
}

const GasTemplate* ChainDocument::source(std::wstring_view name) {
    if (!index_) index_.emplace(templates_);
    const GasTemplate* record = index_->byDoc(name);
    return record != nullptr ? record : index_->byName(name);
}

const GasTemplate* ChainDocument::find(std::wstring_view name) {
    problem_.clear();
    if (lacks(file_, name)) return nullptr;
    const std::optional<FileStamp> stamp = fileStamp(file_);
    if (stamp && stamp != stamp_) load(file_);
    return source(name);
}

// Without an index: most files of a list are looked into once.
const GasTemplate* ChainDocument::loadAndFind(const std::wstring& file, std::wstring_view name) {
    problem_.clear();
    if (!lacks(file, name)) return load(file) ? findSource(templates_, name) : nullptr;
    file_ = file;
    index_.reset();
    templates_.clear();
    stamp_.reset();
    return nullptr;
}

void SpecializesChain::open(std::wstring_view name, std::wstring_view startFile) {
    guarded(L"BaseTemplateName", [&] {
        files_ = loadFileHistory(kFileList);
        baseName_ = name;
        startFile_ = startFile;
        addFile(startFile_);
        if (!document_.load(startFile_)) return tellProblem(startFile_);
        if (nodes_.empty())
            mLoadTree(gstrGetTemplateHistory(document_.templates(), baseName_), startFile_);
    });
}

void SpecializesChain::mLoadTree(std::wstring_view chain, const std::wstring& file) {
    guarded(L"mLoadTree", [&] {
        const auto pieces = split(chain, L"|");
        if (pieces.empty()) return;
        nodes_.assign(1, {std::wstring(pieces[0]), L"root", file});
        for (std::size_t i = 1; i < pieces.size(); ++i) {
            if (pieces[i].empty()) continue;
            nodes_.push_back({std::wstring(pieces[i]), makeKey(i), file, nodes_.size() - 1});
        }
    });
    if (!nodes_.empty()) click(0);
}

void SpecializesChain::addFile(const std::wstring& file) {
    const auto isSame = [&](const std::wstring& one) { return compareWithoutCase(one, file) == 0; };
    if (!file.empty() && std::ranges::none_of(files_, isSame)) files_.push_back(file);
}

void SpecializesChain::click(std::size_t index) {
    constexpr std::wstring_view kRoutine = L"tvwTemplates_NodeClick";
    const GasTemplate* record = guarded(kRoutine, [&] { return lookUp(index); });
    block_.reset();
    if (record != nullptr) {
        guarded(kRoutine, [&] { grow(index, *record); });
        text_ = guarded(kRoutine, [&] { return record->Text.wide(); });
        if (record->Place != GasTemplate::kNowhere) block_ = {currentFile(), record->Place};
    } else {
        text_ = kNoSource;
        nodes_[index].tag.clear();
    }
}

const GasTemplate* SpecializesChain::lookUp(std::size_t index) {
    const ChainNode& node = nodes_[index];
    const GasTemplate* found = document_.find(node.text);
    if (!isDead(currentFile())) tellProblem(currentFile());
    if (found != nullptr) return found;
    if (!node.tag.empty() && node.tag != currentFile() && !isDead(node.tag)) {
        if (const GasTemplate* record = lookInto(node.tag, index)) return record;
    }
    // Each file that is looked into becomes the current one, so a second entry of
    // a file is skipped only right behind the first.
    for (const std::wstring& file : files_) {
        if (file.empty() || file == currentFile() || isDead(file)) continue;
        if (const GasTemplate* record = lookInto(file, index)) return record;
    }
    const std::wstring chosen =
        askForFile(L"Select the node's source file", {}, false, folderOf(startFile_));
    return chosen.empty() ? nullptr : lookInto(chosen, index);
}

const GasTemplate* SpecializesChain::lookInto(std::wstring file, std::size_t index) {
    ChainNode& node = nodes_[index];
    const GasTemplate* record = document_.loadAndFind(file, node.text);
    tellProblem(file);
    if (record == nullptr) return nullptr;
    addFile(file);
    node.tag = std::move(file);
    return record;
}

bool SpecializesChain::isDead(const std::wstring& file) const {
    const auto dead = dead_.find(file);
    return dead != dead_.end() && dead->second == fileStamp(file);
}

void SpecializesChain::tellProblem(const std::wstring& file) {
    if (document_.problem().empty()) return;
    dead_[file] = fileStamp(file);
    tellUser(L"Error loading gas file!\r\n\r\n" + file + L"\r\n" + document_.problem(),
             Icon::exclamation);
}

// True when `record` of the current file is that of the node, or of one above it.
bool SpecializesChain::isAt(std::size_t index, const GasTemplate& record) {
    for (; index != ChainNode::kNoParent; index = nodes_[index].parent) {
        const ChainNode& node = nodes_[index];
        if (node.tag == currentFile() && document_.source(node.text) == &record) return true;
    }
    return false;
}

void SpecializesChain::grow(std::size_t index, const GasTemplate& record) {
    const auto isChild = [&](const ChainNode& node) { return node.parent == index; };
    std::wstring parent = gstrFindPropertyVal(record, L"specializes");
    if (parent.empty() || std::ranges::any_of(nodes_, isChild)) return;
    const GasTemplate* next = document_.source(parent);
    const std::size_t above = nodes_[index].parent;
    if (next == &record || isAt(above, record) || (next != nullptr && isAt(above, *next))) return;
    nodes_.push_back({std::move(parent), makeKey(nodes_.size() + 1), currentFile(), index});
}

void SpecializesChain::resetFiles() {
    const Answer answer = askUser(L"Really reset the list of files that are searched for source?",
                                  Icon::question, Buttons::noYes);
    // Kept: the name stands where a file belongs. No source is found by it, so a
    // walk asks the user again; the next opening adds the open file.
    if (answer == Answer::yes) files_.assign(1, baseName_);
}

void SpecializesChain::saveFiles() const {
    mSaveFileHistory(files_, kFileList);
}

}  // namespace kestrel
