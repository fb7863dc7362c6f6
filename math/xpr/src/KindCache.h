#pragma once

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
        // A graph is made of few classes.
        for (const auto& known : m_vKnown) {
            if (known.first == pClass) {
                return known.second;
            }
        }
        m_vKnown.emplace_back(pClass, in_tell(in_Object));
        return m_vKnown.back().second;
    }

private:
    std::vector<std::pair<const std::type_info*, Kind>> m_vKnown;
};

} // namespace Velmora::Math::Xpr
