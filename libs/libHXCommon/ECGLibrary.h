#ifndef ECGLIBRARY_H
#define ECGLIBRARY_H

#include "ECGConfig.h"
#include "HXCommonExport.h"

#include <QMap>
#include <QObject>
#include <QString>

/**
 * The rhythm configurations for one manikin age, by rhythm id.
 *
 * The application uses ECGLibraries; this class holds and builds what that one hands out.
 *
 * There is one library per age, built from a fixed table when it is first asked for. The default library is
 * the adults'; the child library is a copy of it; the infant and baby libraries are copies with other bounds
 * of the heart rate for some rhythms. Default rates are the same at every age. `olvex-doctor --rhythms` lists
 * the rhythms of an age.
 *
 * A library owns its configurations. Main thread only: building is not guarded by a lock.
 */
class HXCOMMON_EXPORT ECGLibrary : public QObject {
    Q_OBJECT

public:
    /// An empty library.
    explicit ECGLibrary(QObject *parent = nullptr);

    /// Deletes the configurations.
    ~ECGLibrary() override;

    /// The configuration for a rhythm id; null if there is none. It stays owned by the library, also when a
    /// script asked for it.
    Q_INVOKABLE ECGConfig *getECGConfig(int a_RhythmType) const;

    /// All configurations by rhythm id; they stay owned by the library.
    const QMap<int, ECGConfig *> &configs() const { return m_configs; }

    /// The adults' library.
    static ECGLibrary *getDefaultECGLibrary();

    /// The children's library.
    static ECGLibrary *getChildECGLibrary();

    /// The infants' library.
    static ECGLibrary *getInfantECGLibrary();

    /// The babies' library.
    static ECGLibrary *getBabyECGLibrary();

    /**
     * Deletes the four libraries; called when ECGLibraries is destroyed at process exit.
     *
     * The pointers below are left dangling: after this call no library may be asked for, and it must not be
     * called a second time.
     */
    static void cleanup();

    static ECGLibrary *m_DefaultECGLibrary; ///< The adults' library; null until first asked for.
    static ECGLibrary *m_ChildECGLibrary; ///< The children's library; null until first asked for.
    static ECGLibrary *m_InfantECGLibrary; ///< The infants' library; null until first asked for.
    static ECGLibrary *m_BabyECGLibrary; ///< The babies' library; null until first asked for.

public Q_SLOTS:
    /**
     * Adds @p config under its rhythm id and takes ownership of it, so it must have no parent.
     *
     * A configuration that was stored under that id is replaced but not deleted. Null is reported with a
     * warning and ignored.
     */
    void insert(ECGConfig *config);

private:
    QMap<int, ECGConfig *> m_configs;
};

/**
 * Entry point to the rhythm configurations of all manikin ages.
 *
 * @code
 * QJSValue libraries = engine.newQObject(&ECGLibraries::Instance());
 * engine.globalObject().setProperty(QStringLiteral("ECGLibraries"), libraries);
 * engine.evaluate(QStringLiteral("ECGLibraries.getECGConfig('baby', 138).heartrate_max")); // 320
 * @endcode
 *
 * Main thread only; just the making of the one object is guarded against a simultaneous first use. Its end is
 * logged with the debug message "ECGLibraries cleanup" in the default category.
 */
class HXCOMMON_EXPORT ECGLibraries : public QObject {
    Q_OBJECT

public:
    /// The one object; made, together with all four libraries, on first use and destroyed at process exit.
    static ECGLibraries &Instance();

    /**
     * The configuration of a rhythm on a manikin of the given age.
     *
     * @param a_ManikinAge "child", "infant" or "baby", in lower case; any other text is an adult
     * @param a_RhythmType the rhythm id
     * @return null if that age's library has no such rhythm. The configuration stays owned by the library: no
     *         script engine ever deletes it.
     */
    Q_INVOKABLE ECGConfig *getECGConfig(const QString &a_ManikinAge, int a_RhythmType) const;

private:
    ECGLibraries();
    ~ECGLibraries() override;
};

#endif
