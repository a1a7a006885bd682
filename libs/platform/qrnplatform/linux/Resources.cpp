#include "qrnplatform/Resources.h"

#include <cstdlib>
#include <dlfcn.h>
#include <map>
#include <mutex>

namespace qrnplatform {

namespace {

struct Tables {
    std::mutex mutex;
    std::map<Resources::Module, std::vector<std::pair<const Resources::StringEntry*, std::size_t>>>
        byModule;
};

Tables& tables() {
    static Tables t;
    return t;
}

} // namespace

Resources::Module Resources::moduleOf(const void* address) {
    Dl_info info{};
    if (!address || ::dladdr(address, &info) == 0)
        return nullptr;
    return info.dli_fbase;
}

void Resources::registerStrings(Module module, const StringEntry* entries, std::size_t count) {
    if (!module || !entries)
        return;
    Tables& t = tables();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.byModule[module].emplace_back(entries, count);
}

std::wstring Resources::string(Module module, unsigned int id, unsigned short language) {
    Tables& t = tables();
    std::lock_guard<std::mutex> lock(t.mutex);
    auto found = t.byModule.find(module);
    if (found == t.byModule.end())
        return {};
    std::vector<unsigned short> available;
    std::vector<const StringEntry*> candidates;
    for (const auto& table : found->second)
        for (std::size_t i = 0; i < table.second; ++i)
            if (table.first[i].id == id) {
                available.push_back(table.first[i].language);
                candidates.push_back(&table.first[i]);
            }
    const unsigned short chosen = chooseLanguage(language, available);
    for (const StringEntry* e : candidates)
        if (e->language == chosen)
            return e->text ? e->text : L"";
    return {};
}

unsigned short Resources::userLanguage() {
    // The order in which the C library itself looks for the messages' language.
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) {
            const unsigned short language = languageOf(value);
            return language ? language : static_cast<unsigned short>(ENGLISH);
        }
    }
    return ENGLISH;
}

} // namespace qrnplatform
