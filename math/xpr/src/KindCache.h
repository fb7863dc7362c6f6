#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Velmora::Math::Xpr {

/// What a row of checked casts tells of an object, made once for each class and not for each
/// object: a cast that fails costs more than all else that a walk does at a node.
template <class Object, class Kind>
class KindCache {
public:
    /// `in_tell` makes the casts.
    Kind of(const Object& in_Object, Kind (*in_tell)(const Object&)) {
        const std::type_info* const pClass = &typeid(in_Object);
        Known& recent = m_Recent[reinterpret_cast<std::uintptr_t>(pClass) /
                                 alignof(std::type_info) % m_Recent.size()];
        if (recent.first != pClass) {
            recent = find(in_Object, pClass, in_tell);
        }
        return recent.second;
    }

private:
    using Known = std::pair<const std::type_info*, Kind>;

    const Known& find(const Object& in_Object, const std::type_info* in_pClass,
                      Kind (*in_tell)(const Object&)) {
        // A graph is made of few classes.
        for (const Known& known : m_vKnown) {
            if (known.first == in_pClass) {
                return known;
            }
        }
        return m_vKnown.emplace_back(in_pClass, in_tell(in_Object));
    }

    std::vector<Known> m_vKnown;
    /// Some of the same by their addresses, of which two may meet in one place.
    std::array<Known, 32> m_Recent{};
};

} // namespace Velmora::Math::Xpr
