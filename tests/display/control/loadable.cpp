// A library for the real loader to open.
extern "C" int onlyInTheLibrary();

int onlyInTheLibrary() {
    return 42;
}
