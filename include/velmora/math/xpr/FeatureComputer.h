#pragma once

#include <string>

#include <boost/serialization/access.hpp>
#include <boost/serialization/export.hpp>

#include <velmora/CachedLLLogger.h>
#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/LimitedObjPtr.h>
#include <velmora/ObjectWithLogger.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/FeatureComputer.h>
#include <velmora/math/xpr/Evaluator.h>

namespace boost::archive {
class polymorphic_iarchive;
class polymorphic_oarchive;
} // namespace boost::archive

namespace Velmora::Math::Xpr {

/// One expression of one script, behind the interface through which hosts compute features.
///
/// With an evaluator of its own: construct, `setXprFilename`, then `computeFeatures` per frame.
/// With a shared one: `setEvaluator` and `setXprFilename` in either order, for each computer; then
/// the owner of the evaluator links and configures it once; then `computeFeatures` per frame. A
/// shared evaluator isn't held and must outlive the computer.
///
/// Can be written to an archive of Boost.Serialization and read back from a text or XML archive,
/// also through a pointer to `Velmora::Math::FeatureComputer`. Only the names of the script and of
/// the feature are written, and whether the evaluator is shared: the script is read again. A
/// relative script name in an archive that is read through a `vfsistream` is relative to the
/// archive. Loading throws `ExceptionWithMsg` when the script can't be set up; an object that the
/// archive library was creating is abandoned by it then, without its evaluator.
class VELMORA_EXPORT FeatureComputer : public virtual Velmora::Math::FeatureComputer,
                                       public ObjectWithLogger<CachedLLLogger> {
public:
    /// The feature's name inside the script, without the script's name.
    explicit FeatureComputer(const char* in_szFeatureName);
    FeatureComputer(const FeatureComputer&) = delete;
    FeatureComputer& operator=(const FeatureComputer&) = delete;
    ~FeatureComputer() override;

    /// Names the script, without ".xpr", and sets it up: in an evaluator of its own, which looks
    /// below the working directory, or in the shared one. False if the script can't be set up, with
    /// the cause in the log. A second call on a computer with an evaluator of its own fails an
    /// assertion: false.
    bool setXprFilename(const char* in_szFileName,
                        const TSHandle<VirtualFileSystem>& in_pFileSystem);

    /// Makes the computer use a shared evaluator. False, with an assertion, if it has one already;
    /// false also if a script that was named before can't be added to it.
    bool setEvaluator(const LimitedObjPtr<Evaluator>& in_pEvaluator);

    /// Computes the feature of this frame. False if the script doesn't define it, with an ERROR
    /// line on each call, and if it can't be computed.
    bool computeFeatures(DoubleVector& out_vFeature) override;

    /// Makes the functions of the expression forget the frames before. True before the first frame.
    bool reset() override;

protected:
    /// For an archive, which fills the fields, and for a derived class.
    FeatureComputer();

    /// Adds the script to the evaluator; links and configures it if it is the computer's own.
    virtual bool setupEvaluator();

    const LimitedObjPtr<Evaluator>& getEvaluator() const { return m_pEvaluator; }

private:
    friend class boost::serialization::access;
    friend class FeatureComputerWithInputs;

    void serialize(boost::archive::polymorphic_oarchive& inout_Archive, unsigned int in_uiVersion);
    void serialize(boost::archive::polymorphic_iarchive& inout_Archive, unsigned int in_uiVersion);

    bool makeEvaluator(const TSHandle<VirtualFileSystem>& in_pFileSystem);
    bool findExpression();
    bool setUpFrom(std::istream& inout_Stream);

    bool m_bSharedEvaluator = false;
    Handle<Evaluator> m_pOwnedEvaluator;
    std::string m_strFeatureName;
    std::string m_strXprFilename;
    Handle<Expression> m_pExpressionPtr;
    LimitedObjPtr<Evaluator> m_pEvaluator;
    TSHandle<VirtualFileSystem> m_pFileSystem;
};

} // namespace Velmora::Math::Xpr

BOOST_CLASS_EXPORT_KEY2(Velmora::Math::Xpr::FeatureComputer, "XprFeatureComputer")
