extern "C" int helper();

// Makes the library need the one that has the function.
[[maybe_unused]] volatile int needed = helper();
