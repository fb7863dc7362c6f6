#pragma once

#include <string>
#include <vector>

#include <velmora/math/FeatureComputerWithInputs.h>
#include <velmora/math/xpr/FeatureComputer.h>

namespace Velmora::Math::Xpr {

/// A feature computer whose script reads named vectors that the host sets before each frame.
///
/// The computer adds a variable for each input to the evaluator, ahead of the script. A script
/// reaches an input by its plain name. An input must not bear the full name of one of the script's
/// definitions: the script doesn't load then, or, if the definition is its first, is taken for
/// loaded and skipped.
///
/// An archive holds the names of the inputs too, so a computer that was read with an evaluator of
/// its own takes inputs at once.
class VELMORA_EXPORT FeatureComputerWithInputs
    : public virtual Velmora::Math::FeatureComputerWithInputs,
      public FeatureComputer {
public:
    /// For an archive, which fills the fields.
    FeatureComputerWithInputs();

    /// The feature's name inside the script, without the script's name.
    explicit FeatureComputerWithInputs(const char* in_szFeatureName);

    /// Names the inputs. False, and nothing changes, once the evaluator has been set up. A script
    /// isn't set up, with an ERROR line, for inputs of which one has an empty name.
    bool setInputNames(const std::vector<std::string>& in_vInputNames);

    /// Sets an input for the next frame. The vector isn't copied: it must stay alive and unchanged
    /// until the frame has been computed. False, with an ERROR line, for an unknown name; false,
    /// with an assertion, before the evaluator is linked.
    bool setInput(const char* in_szName, const DoubleVector& in_vValue) override;

protected:
    bool setupEvaluator() override;

private:
    friend class boost::serialization::access;

    template <class Archive>
    void transferFields(Archive& inout_Archive);

    void serialize(boost::archive::polymorphic_oarchive& inout_Archive, unsigned int in_uiVersion);
    void serialize(boost::archive::polymorphic_iarchive& inout_Archive, unsigned int in_uiVersion);

    std::vector<std::string> m_vInputNames;
    bool m_bSetUp = false;
};

} // namespace Velmora::Math::Xpr

BOOST_CLASS_EXPORT_KEY2(Velmora::Math::Xpr::FeatureComputerWithInputs,
                        "XprFeatureComputerWithInputs")
