#include <gtest/gtest.h>

#include "GlxTestApi.h"

namespace qrntest {

using qrngl::GlxApi;

std::vector<std::string> g_calls;
GlxApi g_next;
std::vector<int> g_chosenWith;

namespace {

// Every step recorded by name, then handed to g_next.
template <typename F>
struct Recorded;
template <typename R, typename... A>
struct Recorded<R (*)(A...)> {
    template <R (*GlxApi::*Step)(A...), typename Name>
    static R call(A... a) {
        g_calls.push_back(Name::name());
        return (g_next.*Step)(a...);
    }
};
#define QRN_RECORD(field)                                                                          \
    struct field##Name {                                                                           \
        static const char* name() { return #field; }                                               \
    };                                                                                             \
    api.field = &Recorded<decltype(GlxApi::field)>::call<&GlxApi::field, field##Name>

} // namespace

ScopedGlx::ScopedGlx() {
    g_calls.clear();
    g_next = GlxApi::system();
    GlxApi api = GlxApi::system();
    QRN_RECORD(createHiddenWindow);
    QRN_RECORD(destroyWindow);
    QRN_RECORD(choosePixelFormat);
    QRN_RECORD(setPixelFormat);
    QRN_RECORD(createContext);
    QRN_RECORD(deleteContext);
    QRN_RECORD(swapBuffers);
    QRN_RECORD(windowOfFormat);
    QRN_RECORD(fitToHost);
    QRN_RECORD(choosePixelFormatARB);
    QRN_RECORD(glewInit);
    QRN_RECORD(hasPbuffer);
    QRN_RECORD(hasFBConfig);
    QRN_RECORD(hasMultisample);
    QRN_RECORD(createPbuffer);
    QRN_RECORD(destroyPbuffer);
    QRN_RECORD(createNewContext);
    QRN_RECORD(currentContext);
    QRN_RECORD(currentDisplay);
    api.makeCurrent = [](Display* d, Window w, GLXContext c) {
        g_calls.push_back(c ? "makeCurrent" : "makeCurrent(null)");
        return g_next.makeCurrent(d, w, c);
    };
    api.makeContextCurrent = [](Display* d, GLXDrawable w, GLXContext c) {
        g_calls.push_back(c ? "makeContextCurrent" : "makeContextCurrent(null)");
        return g_next.makeContextCurrent(d, w, c);
    };
    api.chooseFBConfig = [](Display* d, const int* attributes, int* format, unsigned int* count) {
        g_calls.push_back("chooseFBConfig");
        g_chosenWith.clear();
        for (const int* p = attributes; *p != None; p += 2)
            g_chosenWith.insert(g_chosenWith.end(), {p[0], p[1]});
        return g_next.chooseFBConfig(d, attributes, format, count);
    };
    GlxApi::set(api);
}

ScopedGlx::~ScopedGlx() {
    GlxApi::set(GlxApi::system());
}

std::vector<std::string> ScopedGlx::take() {
    std::vector<std::string> calls;
    calls.swap(g_calls);
    return calls;
}

} // namespace qrntest
