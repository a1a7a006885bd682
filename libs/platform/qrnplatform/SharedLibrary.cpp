#include "qrnplatform/SharedLibrary.h"

#include <utility>

namespace qrnplatform {

SharedLibrary::~SharedLibrary() {
    unload();
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)), m_path(std::move(other.m_path)),
      m_error(std::move(other.m_error)) {
    other.m_path.clear();
    other.m_error.clear();
}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    if (this != &other) {
        unload();
        m_handle = std::exchange(other.m_handle, nullptr);
        m_path = std::move(other.m_path);
        m_error = std::move(other.m_error);
        other.m_path.clear();
        other.m_error.clear();
    }
    return *this;
}

} // namespace qrnplatform
