#pragma once

#include <functional>

// The ends that others make: of the user's session, of the display, of the program.
namespace kestrel {

struct SessionEnd {
    // Writes what the user has made. No window may be shown or asked any more.
    std::function<void()> keep;
    // Ends the program without a question, from the event loop.
    std::function<void()> close;
};

// From now on `end` is called when the system tells of one. Called once, when there is a
// display.
void watchSession(SessionEnd end);

}  // namespace kestrel
