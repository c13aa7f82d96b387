// A library that another one needs.
extern "C" int helper() {
    return 1;
}
