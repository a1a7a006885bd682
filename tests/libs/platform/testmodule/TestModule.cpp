// A plug-in for the loader's tests.
#ifdef _WIN32
#define TESTMODULE_EXPORT __declspec(dllexport)
#else
#define TESTMODULE_EXPORT __attribute__((visibility("default")))
#endif

namespace {
int counter = 0;
} // namespace

extern "C" TESTMODULE_EXPORT int qrnplatform_test_add(int a, int b) {
    return a + b;
}

// State that lives as long as the module stays loaded.
extern "C" TESTMODULE_EXPORT int qrnplatform_test_next() {
    return ++counter;
}
