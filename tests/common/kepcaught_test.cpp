// SPDX-License-Identifier: Apache-2.0
// What is thrown ends at the way in, in one error line; a thread that is being ended goes on
// ending.
#include "kepcaught.h"

#include <new>
#include <stdexcept>

#include <pthread.h>

#include <gmock/gmock.h>

#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int kDone = 0;
constexpr unsigned int kFailed = 2;

class KepCaught : public TelevisionTest
{
protected:
    KepCaught() { connectLog(); }
};

template <typename Exception>
unsigned int requestThatThrows(const Exception& exception)
try {
    throw exception;
} catch (...) {
    return kepCaught(KEP_HERE, kFailed);
}

LogLine lineOf(const char* what)
{
    return {kLogError, "ERROR_LOG", "kepcaught_test:requestThatThrows",
            std::string{"Exception in requestThatThrows: "} + what};
}

bool gReturned = false;

/// A thread that is ended inside of a guarded step, by itself or by another.
template <typename End>
void endThreadInside(End end, bool catches)
{
    gReturned = false;
    struct Work {
        End end;
        bool catches;
    } work{end, catches};
    pthread_t thread{};
    ASSERT_EQ(pthread_create(
                  &thread, nullptr,
                  [](void* argument) -> void* {
                      const Work& work = *static_cast<Work*>(argument);
                      if (work.catches) {
                          try {
                              work.end();
                          } catch (...) {
                              static_cast<void>(kepCaught(KEP_HERE, kFailed));
                          }
                      } else {
                          static_cast<void>(kepGuarded(KEP_HERE, "the step", false, [&work] {
                              work.end();
                              return true;
                          }));
                      }
                      gReturned = true;
                      return nullptr;
                  },
                  &work),
              0);
    pthread_join(thread, nullptr);
}

void exitThread()
{
    pthread_exit(nullptr);
}

void cancelThread()
{
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

} // namespace

TEST_F(KepCaught, AStandardExceptionIsNamedByItsText)
{
    EXPECT_EQ(requestThatThrows(std::invalid_argument{"stoi"}), kFailed);
    EXPECT_EQ(requestThatThrows(std::bad_alloc{}), kFailed);
    EXPECT_THAT(logLines(), ElementsAre(lineOf("stoi"), lineOf("std::bad_alloc")));
}

TEST_F(KepCaught, AnythingElseIsNamedByItsType)
{
    EXPECT_EQ(requestThatThrows(7), kFailed);
    EXPECT_EQ(requestThatThrows("text"), kFailed);
    EXPECT_THAT(logLines(), ElementsAre(lineOf("i"), lineOf("PKc")));
}

TEST_F(KepCaught, TheTextOfAnExceptionIsNoFormat)
{
    EXPECT_EQ(requestThatThrows(std::runtime_error{"100% %s%n"}), kFailed);
    EXPECT_THAT(logLines(), ElementsAre(lineOf("100% %s%n")));
}

TEST_F(KepCaught, AGuardedStepAnswersForItselfUnlessItThrows)
{
    EXPECT_EQ(kepGuarded(KEP_HERE, "the step", kFailed, [] { return kDone; }), kDone);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(kepGuarded(KEP_HERE, "the step", kFailed,
                         []() -> unsigned int { throw std::runtime_error{"no more"}; }),
              kFailed);
    EXPECT_THAT(logLines(), ElementsAre(LogLine{kLogError, "ERROR_LOG", "kepcaught_test:TestBody",
                                                "Exception in the step: no more"}));
}

TEST_F(KepCaught, AThreadThatIsBeingEndedGoesOnEnding)
{
    for (const bool catches : {false, true}) {
        endThreadInside(&exitThread, catches);
        EXPECT_FALSE(gReturned);
        endThreadInside(&cancelThread, catches);
        EXPECT_FALSE(gReturned);
    }
    EXPECT_THAT(logLines(), IsEmpty());
}
