// A program of a whole library and of what that may know: it does not link when the
// library asks for more.
int main() {}
