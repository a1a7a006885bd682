#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qrnsg {

// An id-keyed store that keeps insertion order: iteration visits entries in the order they
// were first added, and lookup by id is constant time. Removing keeps the others' order.
template <class K, class T>
class Container {
public:
    using value_type = std::pair<K, T>;
    using iterator = typename std::vector<value_type>::iterator;
    using const_iterator = typename std::vector<value_type>::const_iterator;

    // Adds or replaces; a replaced entry keeps its place in the order.
    T& set(const K& id, T value) {
        auto it = m_index.find(id);
        if (it != m_index.end()) {
            m_items[it->second].second = std::move(value);
            return m_items[it->second].second;
        }
        m_index.emplace(id, m_items.size());
        m_items.emplace_back(id, std::move(value));
        return m_items.back().second;
    }
    // The entry for id, added with a default value when missing.
    T& operator[](const K& id) {
        auto it = m_index.find(id);
        if (it != m_index.end())
            return m_items[it->second].second;
        return set(id, T());
    }
    T* find(const K& id) {
        auto it = m_index.find(id);
        return it == m_index.end() ? nullptr : &m_items[it->second].second;
    }
    const T* find(const K& id) const {
        auto it = m_index.find(id);
        return it == m_index.end() ? nullptr : &m_items[it->second].second;
    }
    bool contains(const K& id) const { return m_index.count(id) != 0; }
    bool remove(const K& id) {
        auto it = m_index.find(id);
        if (it == m_index.end())
            return false;
        std::size_t pos = it->second;
        m_index.erase(it);
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(pos));
        for (std::size_t i = pos; i < m_items.size(); ++i)
            m_index[m_items[i].first] = i;
        return true;
    }
    void clear() {
        m_items.clear();
        m_index.clear();
    }
    void reserve(std::size_t n) {
        m_items.reserve(n);
        m_index.reserve(n);
    }
    std::size_t size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }
    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }

private:
    std::vector<value_type> m_items;
    std::unordered_map<K, std::size_t> m_index;
};

} // namespace qrnsg
