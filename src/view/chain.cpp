#include "view/chain.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>

#include "base/keys.h"
#include "base/paths.h"
#include "base/text.h"
#include "gas/load.h"
#include "services/archives.h"
#include "services/guard.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "services/program.h"
#include "system/letters.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kFileList = L"spec.his";
constexpr std::wstring_view kNoSource = L"Source not available.";

// Some 16 MB: far more than any set of files has. A file's own record takes as much as some.
constexpr std::size_t kMostKnownValues = 2'000'000;
constexpr std::size_t kValuesOfAFile = 16;
constexpr std::size_t kMostKept = 32;

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

std::vector<GasTemplate> recordsOfFile(std::wstring path) {
    std::vector<GasTemplate> templates;
    const Silence silence;
    if (gblnLoadGas(path, templates, nullptr)) return templates;
    throw silence.failure().value_or(RunTimeError(kDeviceError, std::wstring(kNoGasData)));
}

}  // namespace

std::wstring chainName(const GasTemplate& record) {
    const std::wstring name = gstrFindPropertyVal(record, L"name");
    return name.empty() ? record.Name.wide() : name;
}

bool ChainDocument::load(const std::wstring& file) {
    const std::optional<FileStamp> stamp = sourceStamp(file);
    problem_.clear();
    try {
        std::vector<GasTemplate> templates = recordsOf(file, stamp);
        take(file);
        templates_ = std::move(templates);
    } catch (const ArchiveFailure& failure) {
        return fails(archiveOf(file), failure.description());
    } catch (...) {
        return fails(file, currentError().description());
    }
    stamp_ = stamp;
    if (stamp && isSettled(*stamp)) remember(file, *stamp, sourceValues(templates_));
    return true;
}

std::vector<GasTemplate> ChainDocument::recordsOf(const std::wstring& file,
                                                  const std::optional<FileStamp>& stamp) {
    if (archiveOf(file).empty()) return recordsOfFile(file);
    const auto kept = std::ranges::find(kept_, file, &Loaded::file);
    if (kept != kept_.end() && kept->stamp == stamp) return kept->templates;
    begin();
    GasRecords records = readRecords(gProgram().host.archives->read(file), *gProgram().sourcePage);
    if (!records.templates.empty()) return std::move(records.templates);
    throw RunTimeError(kDeviceError, std::wstring(kNoGasData));
}

const GasTemplate* ChainDocument::kept(const GasTemplate* found) {
    if (found == nullptr || !stamp_ || !isSettled(*stamp_) || archiveOf(file_).empty()) {
        return found;
    }
    std::erase_if(kept_, [this](const Loaded& one) { return one.file == file_; });
    kept_.push_back({file_, *stamp_, templates_});
    if (kept_.size() > kMostKept) kept_.pop_front();
    return found;
}

// What a Cancel leaves undone is no problem.
bool ChainDocument::fails(const std::wstring& file, std::wstring_view reason) {
    problemFile_ = file;
    problem_ = goesOn() ? reason : std::wstring_view();
    return false;
}

void ChainDocument::begin() {
    if (reading_) return;
    reading_ =
        std::make_unique<ProgressScope>(gProgram().progress, owner_, L"Looking into archives...");
}

void ChainDocument::rest() {
    if (gProgram().host.archives != nullptr) gProgram().host.archives->close();
    reading_.reset();
}

void ChainDocument::remember(const std::wstring& file, const FileStamp& stamp,
                             std::vector<std::size_t> values) {
    const auto [known, isNew] = known_.try_emplace(file);
    knownValues_ += isNew ? kValuesOfAFile : 0;
    knownValues_ += values.size() - known->second.values.size();
    known->second = {stamp, std::move(values)};
    if (knownValues_ <= kMostKnownValues) return;
    known_.clear();
    knownValues_ = 0;
}

bool ChainDocument::lacks(const std::wstring& file, std::wstring_view name,
                          const std::optional<FileStamp>& stamp) const {
    const auto known = known_.find(file);
    return known != known_.end() && known->second.stamp == stamp &&
           !std::ranges::binary_search(known->second.values, hashOf(name));
}

// As the current file, of which nobody needed the templates yet.
void ChainDocument::take(const std::wstring& file) {
    file_ = file;
    index_.reset();
    templates_.clear();
    stamp_.reset();
}

const GasTemplate* ChainDocument::source(std::wstring_view name) {
    if (!index_) index_.emplace(templates_);
    const GasTemplate* record = index_->byDoc(name);
    return record != nullptr ? record : index_->byName(name);
}

const GasTemplate* ChainDocument::find(std::wstring_view name) {
    problem_.clear();
    const std::optional<FileStamp> stamp = sourceStamp(file_);
    if (lacks(file_, name, stamp)) return nullptr;
    if (stamp && stamp != stamp_) load(file_);
    return source(name);
}

// Without an index: most files of a list are looked into once.
const GasTemplate* ChainDocument::loadAndFind(const std::wstring& file, std::wstring_view name) {
    problem_.clear();
    if (!lacks(file, name, sourceStamp(file))) {
        return load(file) ? kept(findSource(templates_, name)) : nullptr;
    }
    take(file);
    return nullptr;
}

const GasTemplate* ChainDocument::searchIn(const std::wstring& archive, std::wstring_view name) {
    problem_.clear();
    Archives& archives = *gProgram().host.archives;
    std::shared_ptr<const Archives::Files> files;
    try {
        if (!archives.knows(archive)) begin();
        files = archives.files(archive);
    } catch (...) {
        fails(archive, currentError().description());
        return nullptr;
    }
    return searchAll(archive, *files, name);
}

const GasTemplate* ChainDocument::searchAll(const std::wstring& archive,
                                            const Archives::Files& files, std::wstring_view name) {
    const std::optional<FileStamp> stamp = fileStamp(archive);
    const GasTemplate* found = nullptr;
    std::size_t failed = 0;
    std::pair<std::wstring, std::wstring> first;  // and why
    for (std::size_t i = 0; found == nullptr && i < files.size(); ++i) {
        const std::wstring& file = files[i];
        if (lacks(file, name, stamp)) {
            take(file);
            continue;
        }
        begin();
        reading_->show(percentage(i, files.size()), file);
        if (!reading_->goesOn()) break;
        if (load(file)) {
            found = kept(findSource(templates_, name));
            continue;
        }
        // The archive itself, or a Cancel.
        if (problemFile_ != file) return nullptr;
        if (stamp) remember(file, *stamp, {});
        if (failed++ == 0) first = {file, problem_};
    }
    if (failed > 0) std::tie(problemFile_, problem_) = std::move(first);
    if (failed > 1) {
        problem_ +=
            L" In all " + std::to_wstring(failed) + L" files of the archive cannot be loaded.";
    }
    return found;
}

void SpecializesChain::open(std::wstring_view name, std::wstring_view startFile) {
    guarded(L"BaseTemplateName", [&] {
        files_ = loadFileHistory(kFileList);
        baseName_ = name;
        const std::wstring file = sourcePath(startFile);
        const auto origin = gProgram().origins.find(file);
        const std::wstring archive =
            origin == gProgram().origins.end() ? archiveOf(file) : origin->second;
        startPlace_ = archive.empty() ? file : archive;
        addFile(startPlace_);
        if (!document_.load(file)) return tellProblem();
        if (nodes_.empty())
            mLoadTree(gstrGetTemplateHistory(document_.templates(), baseName_), file);
    });
    document_.rest();
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

void SpecializesChain::click(std::size_t index, Owner* owner) {
    constexpr std::wstring_view kRoutine = L"tvwTemplates_NodeClick";
    document_.attend(owner);
    const GasTemplate* record = guarded(kRoutine, [&] { return lookUp(index); });
    document_.rest();
    document_.attend(nullptr);
    block_.reset();
    source_.clear();
    if (record != nullptr) {
        guarded(kRoutine, [&] { grow(index, *record); });
        text_ = guarded(kRoutine, [&] { return record->Text.wide(); });
        source_ = currentFile();
        const bool isBlock = record->Place != GasTemplate::kNowhere;
        if (isBlock && archiveOf(source_).empty()) block_ = {source_, record->Place};
    } else {
        text_ = kNoSource;
        nodes_[index].tag.clear();
    }
}

const GasTemplate* SpecializesChain::lookUp(std::size_t index) {
    const ChainNode& node = nodes_[index];
    const GasTemplate* found = document_.find(node.text);
    if (!isDead(currentFile())) tellProblem();
    if (found != nullptr) return found;
    if (!node.tag.empty() && node.tag != currentFile() && !isDead(node.tag)) {
        if (const GasTemplate* record = lookInto(node.tag, index)) return record;
    }
    // Each file that is looked into becomes the current one, so a second entry of
    // a file is skipped only right behind the first.
    for (const std::wstring& file : files_) {
        if (file.empty() || file == currentFile() || isDead(file)) continue;
        if (!document_.goesOn()) break;
        if (const GasTemplate* record = lookInto(file, index)) return record;
    }
    if (!document_.goesOn()) return nullptr;
    const std::wstring chosen = askForSource();
    return chosen.empty() ? nullptr : lookInto(chosen, index);
}

// Without the dialog that would stand before the question.
std::wstring SpecializesChain::askForSource() {
    document_.rest();
    const bool archives = gProgram().host.archives != nullptr;
    const std::wstring filter =
        archives ? std::wstring(kAllFiles).append(L"|").append(kTankFiles) : std::wstring();
    return askForFile(L"Select the node's source file", filter, false, folderOf(startPlace_));
}

const GasTemplate* SpecializesChain::lookInto(const std::wstring& file, std::size_t index) {
    ChainNode& node = nodes_[index];
    const GasTemplate* record = isArchive(file) ? document_.searchIn(file, node.text)
                                                : document_.loadAndFind(file, node.text);
    tellProblem();
    if (record == nullptr) return nullptr;
    const std::wstring archive = archiveOf(file);
    addFile(archive.empty() ? file : archive);
    node.tag = currentFile();
    return record;
}

bool SpecializesChain::isDead(const std::wstring& file) const {
    const std::wstring archive = archiveOf(file);
    if (!archive.empty() && isDead(archive)) return true;
    const auto dead = dead_.find(file);
    return dead != dead_.end() && dead->second == sourceStamp(file);
}

void SpecializesChain::tellProblem() {
    if (document_.problem().empty()) return;
    const std::wstring& file = document_.problemFile();
    dead_[file] = sourceStamp(file);
    document_.rest();
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
