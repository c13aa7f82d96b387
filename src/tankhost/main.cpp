// kestrel-tank: the process that the closed archive library runs in, so that nothing that the
// library does can harm Kestrel. It is started by Kestrel alone.
#include <array>
#include <cstdio>

#include "system/process.h"
#include "tankhost/server.h"

namespace {

using namespace kestrel;

int serve(const tankhost::Streams& streams) {
    tankhost::Server server;
    PackedStream questions(tankhost::kMostFrame);
    std::array<char, 1 << 16> bytes{};
    while (!questions.isWrong()) {
        const std::size_t count = streams.read(bytes.data(), bytes.size());
        if (count == 0) return 0;
        questions.add({bytes.data(), count});
        while (const std::optional<std::string> question = questions.next()) {
            PackedWriter frame;
            frame.add(std::string_view(server.answer(*question)));
            if (!streams.write(frame.bytes())) return 0;
        }
    }
    return 1;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what goes wrong ends the process.
int main(int count, char** words) {
    if (count > 1 && words[1] == std::string_view("--run"))
        return tankhost::becomeProgram(words + 1);
    if (count != 2 || words[1] != std::string_view("--serve")) {
        std::fputs("kestrel-tank reads archives for Kestrel, which starts it itself.\n", stderr);
        return 2;
    }
    settleProcess();
    const tankhost::Streams streams;
    tankhost::restrictProcess();
    tankhost::leave(serve(streams));
}
