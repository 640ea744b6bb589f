#ifndef PLC_TESTS_MODEL_SIDE_BY_SIDE_H
#define PLC_TESTS_MODEL_SIDE_BY_SIDE_H

#include <string>

#include "driver/Communication_Protocol.h"
#include "model/differences.h"
#include "model/driver_model.h"
#include "model/steps.h"

namespace plc::model {

/// The driver and the model, both as after loading, given the same steps and compared in every
/// member after each. One at a time: there is one driver object.
class SideBySide {
public:
    SideBySide();
    ~SideBySide();

    /// The step with its reply in bytes, as the plan makes them of the request that waits now.
    Step concrete(const Step& step) const;

    /// Takes a step on both sides. Returns what differs, or nothing.
    std::string take(const Step& step);
    /// Compares the image as a whole; take() looks at all of it only while it is small.
    std::string compareWholeImage();

    const DriverModel& model() const { return m_model; }

private:
    SideBySide(const SideBySide&) = delete;
    SideBySide& operator=(const SideBySide&) = delete;

    void run(const SetSettings& step);
    void run(const ChangeWord& step);
    void run(const SetCallbacks& step);
    void run(const EnableStation& step);
    void run(const PassSymbols& step);
    void run(const AddRead& step);
    void run(const AddWrite& step);
    void run(const AddOnce& step);
    void run(const RebuildReadList& step);
    void run(const Cut& step);
    void run(const Fold& step);
    void run(const AskAddress& step);
    void run(const ResolveLabel& step);
    void run(const ReadValue& step);
    void run(const WriteValue& step);
    void run(const Ask& step);
    void run(const ChangeRequest& step);
    void run(const TakeReply& step);

    void checkQueue();
    void checkBatch();
    void checkSettings();
    void checkStations();
    void checkCallbacks();
    void checkImageByte(ImageModel::Key key, std::uint8_t expected);
    void checkWholeImage();
    void checkImageKeys();
    void checkImage();
    void checkCounters();

    DriverModel m_model;
    Settings m_modelSettings[kSettingsRecords];
    ComInfo m_settings[kSettingsRecords];
    Bytes m_lastReply;
    Differences m_differences;
};

} // namespace plc::model

#endif
