// SPDX-License-Identifier: MIT
#include "text/VelkDspLog.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using Notifier = tav::MaxConsoleNotifier;

/// Writes its letter and what it hears; on "leave" it removes `other`.
class Recorder : public Notifier::Listener {
public:
    Recorder(std::string& heard, char letter) : heard_(heard), letter_(letter) {}

    void LogMessage(std::string_view message) override {
        heard_ += letter_;
        heard_ += message;
        if (message == "leave" && other) Notifier::Instance().RemoveListener(*other);
    }

    const Notifier::Listener* other = nullptr;

private:
    std::string& heard_;
    char letter_;
};

TEST(Log, ReachesStandardErrorAndListenersInOrder) {
    std::string heard;
    Recorder first(heard, 'A');
    Recorder second(heard, 'B');
    Notifier& notifier = Notifier::Instance();
    notifier.AddListener(first);
    notifier.AddListener(second);
    notifier.AddListener(first);  // adding twice adds once

    testing::internal::CaptureStderr();
    tav::Log("1");
    first.other = &second;
    tav::Log("leave");  // the second is gone before its turn
    notifier.RemoveListener(first);
    tav::Log("2");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "1\nleave\n2\n");
    EXPECT_EQ(heard, "A1B1Aleave");
}

}  // namespace
