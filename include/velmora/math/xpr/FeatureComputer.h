#pragma once

#include <istream>
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
/// With a shared one: `setEvaluator`, then `setXprFilename`, for each computer; then the owner of
/// the evaluator links and reconfigures it once; then `computeFeatures` per frame. A shared
/// evaluator isn't held and must outlive the computer. One thread at a time uses a computer, and
/// all computers that share an evaluator.
///
/// Can be written to a polymorphic archive of Boost.Serialization and read back from one of text or
/// XML, also through a pointer to `Velmora::Math::FeatureComputer`. Only the names of the script
/// and of the feature are written, and whether the evaluator is shared. Reading sets the script up
/// again, or, for a shared evaluator, leaves that to `setEvaluator`. A relative script name in an
/// archive that is read through a `vfsistream` is relative to the archive, and a name with a ".."
/// in it is refused.
///
/// Reading throws `ExceptionWithMsg` when the script can't be set up, with the cause in the log,
/// and what the archive library throws for an archive that it can't read. The computer has no
/// script and no evaluator then. When it was read through a pointer, the archive library abandons
/// it and the pointer must not be used; nothing that the computer held is lost with it. Reading
/// into an object of the host abandons nothing.
class VELMORA_EXPORT FeatureComputer : public virtual Velmora::Math::FeatureComputer,
                                       public ObjectWithLogger<CachedLLLogger> {
public:
    /// The feature's name inside the script, without the script's name.
    explicit FeatureComputer(const char* in_szFeatureName);
    FeatureComputer(const FeatureComputer&) = delete;
    FeatureComputer& operator=(const FeatureComputer&) = delete;
    ~FeatureComputer() override;

    /// Names the script, without ".xpr", and sets it up: in an evaluator of its own, which looks
    /// below the directory "." of the file system, also for a name that starts with "/"; or in the
    /// shared one, which looks where its owner told it to. A null file system stands for the
    /// machine's files. False if the script can't be set up, with the cause in the log.
    ///
    /// A second call on a computer with an evaluator of its own fails an assertion, whether or not
    /// the first one succeeded: false.
    bool setXprFilename(const char* in_szFileName,
                        const TSHandle<VirtualFileSystem>& in_pFileSystem);

    /// Makes the computer use a shared evaluator, to which the script that was named before is
    /// added. False if the script can't be added; false, with an assertion, if the computer has an
    /// evaluator already.
    bool setEvaluator(const LimitedObjPtr<Evaluator>& in_pEvaluator);

    /// Computes the feature of this frame. False, with an ERROR line and an assertion on each call,
    /// if the script doesn't define it; false, with an assertion, if it can't be computed.
    bool computeFeatures(DoubleVector& out_vFeature) override;

    /// Makes the functions of the expression forget the frames before. True before the first frame.
    bool reset() override;

protected:
    /// For an archive, which fills the fields, and for a derived class.
    FeatureComputer();

    /// Adds the script to the evaluator; links and reconfigures it if it is the computer's own.
    virtual bool setupEvaluator();

    /// The evaluator in use, owned or shared; null before there is one.
    const LimitedObjPtr<Evaluator>& getEvaluator() const { return m_pEvaluator; }

    /// Back to a computer that was never set up, without names, when reading it has failed.
    void forget();

private:
    friend class boost::serialization::access;

    void serialize(boost::archive::polymorphic_oarchive& inout_Archive, unsigned int in_uiVersion);
    void serialize(boost::archive::polymorphic_iarchive& inout_Archive, unsigned int in_uiVersion);

    template <class Archive>
    void transferFields(Archive& inout_Archive);
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
