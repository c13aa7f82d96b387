// Chains of templates over files of any bytes.
#include "fuzz/fuzz.h"
#include "gas/load.h"
#include "gas/query.h"
#include "gas/template.h"
#include "services/files.h"
#include "services/pagetext.h"
#include "view/browse.h"
#include "view/chain.h"
#include "view/tree.h"

namespace kestrel::fuzz {
namespace {

constexpr char kNextFile = '\x01';
constexpr std::size_t kMostFiles = 4;
constexpr std::size_t kMostClicks = 12;

// The parts of the input, each as a file; the first two are listed in "spec.his".
Words putFiles(Input input) {
    std::filesystem::current_path(workFolder().native());
    Words files;
    std::wstring list;
    while (files.size() < kMostFiles && (files.empty() || !input.empty())) {
        const std::wstring name = std::to_wstring(files.size()) + L".gas";
        files.push_back(workFolder().put(name, input.line(kNextFile)));
        if (files.size() <= 2) list += files.back() + L"\r\n";
    }
    workFolder().put(L"spec.his", narrow(list));
    return files;
}

void checkNodes(const SpecializesChain& chain) {
    for (std::size_t i = 0; i < chain.nodes().size(); ++i) {
        const ChainNode& node = chain.nodes()[i];
        require(i == 0 ? node.parent == ChainNode::kNoParent : node.parent < i);
        require(node.tag.empty() || fileExists(node.tag));
    }
    require(!chain.nodes().empty() || chain.text().empty());
}

void walk(test::RecordingHost& host, const std::wstring& name, const Words& files) {
    SpecializesChain chain;
    chain.open(name, files.front());
    checkNodes(chain);
    for (std::size_t i = 0; i < std::min(chain.nodes().size(), kMostClicks); ++i) {
        host.files.assign(1, files.back());
        const std::size_t before = chain.nodes().size();
        chain.click(i);
        require(!chain.text().empty() && chain.nodes().size() - before <= 1);
        checkNodes(chain);
    }
    chain.saveFiles();
    for (const std::wstring& file : files) {
        require(std::ranges::count(chain.files(), file) <= 1);
    }
}

}  // namespace

void run(Input input, test::RecordingHost& host) {
    const Words files = putFiles(input);
    std::vector<GasTemplate> templates;
    std::wstring path = files.front();
    gblnLoadGas(path, templates, nullptr);
    walk(host, chainName(templates.front()), files);
    walk(host, chainName(templates.back()), files);
}

}  // namespace kestrel::fuzz
