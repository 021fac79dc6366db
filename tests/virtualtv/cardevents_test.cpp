// SPDX-License-Identifier: Apache-2.0
// Events of the virtual cards: what a client that waits is told of the writes of others.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "journal.h"
#include "openedcard.h"
#include "televisiontest.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace
{

bool gShortOfWatches = false; // the next watch is refused

} // namespace

/// Found before the C library's.
extern "C" [[gnu::visibility("default")]] int inotify_init1(int flags)
{
    if (std::exchange(gShortOfWatches, false)) {
        errno = EMFILE;
        return -1;
    }
    return reinterpret_cast<decltype(inotify_init1)*>(dlsym(RTLD_NEXT, "inotify_init1"))(flags);
}

namespace
{

using Names = std::vector<std::string>;

constexpr int kSoonMs = 10'000; // a deadline for what must come
constexpr int kNotMs = 100;     // time enough for what must not come

ControlPtr subscribed(const std::string& card, int mode = SND_CTL_NONBLOCK)
{
    ControlPtr handle = opened(card, mode);
    EXPECT_EQ(snd_ctl_subscribe_events(handle.get(), 1), 0);
    return handle;
}

int write(snd_ctl_t* card, const std::string& element, long value)
{
    snd_ctl_elem_value_t* written = nullptr;
    snd_ctl_elem_value_alloca(&written);
    snd_ctl_elem_value_set_interface(written, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_value_set_name(written, element.c_str());
    snd_ctl_elem_value_set_integer(written, 0, value);
    return snd_ctl_elem_write(card, written);
}

void write(const std::string& card, const std::string& element, long value)
{
    EXPECT_GE(write(opened(card).get(), element, value), 0) << element;
}

/// The same in a process of its own.
void writeElsewhere(const std::string& card, const std::string& element, long value)
{
    const pid_t process = fork();
    if (process == 0)
        _exit(write(opened(card).get(), element, value) >= 0 ? 0 : 1);
    int status = -1;
    waitpid(process, &status, 0);
    EXPECT_EQ(status, 0);
}

/// One event as text, "" when there is none.
std::string nextEvent(snd_ctl_t* card)
{
    snd_ctl_event_t* event = nullptr;
    snd_ctl_event_alloca(&event);
    const int status = snd_ctl_read(card, event);
    if (status != 1) {
        EXPECT_EQ(status, -EAGAIN);
        return "";
    }
    EXPECT_EQ(snd_ctl_event_get_type(event), SND_CTL_EVENT_ELEM);
    EXPECT_EQ(snd_ctl_event_elem_get_mask(event), unsigned{SND_CTL_EVENT_MASK_VALUE});
    EXPECT_EQ(snd_ctl_event_elem_get_interface(event), SND_CTL_ELEM_IFACE_MIXER);
    return snd_ctl_event_elem_get_name(event);
}

Names pendingEvents(snd_ctl_t* card)
{
    Names names;
    for (std::string name = nextEvent(card); !name.empty(); name = nextEvent(card))
        names.push_back(name);
    return names;
}

bool wakes(snd_ctl_t* card, int timeoutMs = kSoonMs)
{
    return snd_ctl_wait(card, timeoutMs) == 1;
}

/// Processor time of this thread.
std::chrono::nanoseconds workTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec};
}

class CardEvents : public TelevisionTest
{
};

} // namespace

TEST_F(CardEvents, AWriteOfAnotherProcessWakesAndIsToldOnce)
{
    const ControlPtr card = subscribed("default");
    writeElsewhere("default", "Softmaster1", 40);
    EXPECT_TRUE(wakes(card.get()));
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Softmaster1"));
    EXPECT_FALSE(wakes(card.get(), kNotMs));
    EXPECT_THAT(pendingEvents(card.get()), IsEmpty());
}

TEST_F(CardEvents, AClientSleepsUntilAWrite)
{
    const ControlPtr card = subscribed("default");
    const auto before = workTime();
    EXPECT_FALSE(wakes(card.get(), /*timeoutMs=*/300));
    EXPECT_LT(workTime() - before, std::chrono::milliseconds{30});
}

TEST_F(CardEvents, EveryChangedElementIsToldOnce)
{
    const ControlPtr card = subscribed("hw:0");
    for (const long value : {1, 2, 3})
        write("hw:0", "Sndout Open", value);
    write("hw:0", "Gain Input", 1);
    EXPECT_TRUE(wakes(card.get()));
    EXPECT_THAT(pendingEvents(card.get()), UnorderedElementsAre("Sndout Open", "Gain Input"));
}

TEST_F(CardEvents, AChangeThereAndBackIsOne)
{
    const ControlPtr card = subscribed("hw:0");
    write("hw:0", "Sndout Open", 1);
    write("hw:0", "Sndout Open", 0);
    EXPECT_TRUE(wakes(card.get()));
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Sndout Open"));
}

TEST_F(CardEvents, AWriteOfTheSameValueIsNone)
{
    write("default", "Softmaster", 40);
    const ControlPtr card = subscribed("default");
    EXPECT_FALSE(wakes(card.get(), /*timeoutMs=*/0));
    write("default", "Softmaster", 40);
    EXPECT_FALSE(wakes(card.get(), kNotMs));
    EXPECT_THAT(pendingEvents(card.get()), IsEmpty());
}

TEST_F(CardEvents, ARefusedWriteIsNone)
{
    const ControlPtr card = subscribed("default");
    EXPECT_EQ(write(opened("default").get(), "Softmaster", 101), -EINVAL);
    injectCard("write", -EIO, "Softmaster");
    EXPECT_EQ(write(opened("default").get(), "Softmaster", 1), -EIO);
    EXPECT_FALSE(wakes(card.get(), kNotMs));
}

TEST_F(CardEvents, AWriteToTheOtherCardIsNone)
{
    const ControlPtr card = subscribed("default");
    EXPECT_FALSE(wakes(card.get(), /*timeoutMs=*/0)); // it waits from now on
    write("hw:0", "Sndout Open", 1);
    EXPECT_FALSE(wakes(card.get(), kNotMs));
    EXPECT_THAT(pendingEvents(card.get()), IsEmpty());
}

TEST_F(CardEvents, AClientIsToldOfItsOwnWrites)
{
    const ControlPtr card = subscribed("default");
    EXPECT_EQ(write(card.get(), "Softmaster", 1), 1);
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Softmaster"));
}

TEST_F(CardEvents, EverySubscriberIsTold)
{
    const ControlPtr first = subscribed("default");
    const ControlPtr second = subscribed("default");
    writeElsewhere("default", "Softmaster", 1);
    for (const ControlPtr& card : {std::cref(first), std::cref(second)}) {
        EXPECT_TRUE(wakes(card.get()));
        EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Softmaster"));
    }
}

TEST_F(CardEvents, ItStaysAwakeUntilTheLastOfSeveralIsRead)
{
    const ControlPtr card = subscribed("hw:0");
    write("hw:0", "Sndout Open", 1);
    write("hw:0", "Sndout Close", 1);
    Names names;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(wakes(card.get())) << i;
        names.push_back(nextEvent(card.get()));
    }
    EXPECT_THAT(names, UnorderedElementsAre("Sndout Open", "Sndout Close"));
    EXPECT_FALSE(wakes(card.get(), kNotMs));
}

TEST_F(CardEvents, WritesBeforeTheSubscriptionAreNotToldAndThoseBetweenItAndTheFirstWaitAre)
{
    write("hw:0", "Sndout Open", 1);
    const ControlPtr card = subscribed("hw:0");
    write("hw:0", "Sndout Close", 1);
    EXPECT_TRUE(wakes(card.get()));
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Sndout Close"));
}

TEST_F(CardEvents, ADescriptorMayBeAskedForBeforeTheSubscription)
{
    const ControlPtr card = opened("default", SND_CTL_NONBLOCK);
    pollfd descriptor = {};
    ASSERT_EQ(snd_ctl_poll_descriptors_count(card.get()), 1);
    ASSERT_EQ(snd_ctl_poll_descriptors(card.get(), &descriptor, 1), 1);
    write("default", "Softmaster", 1);
    snd_ctl_subscribe_events(card.get(), 1);
    write("default", "Softmaster0", 1);
    EXPECT_EQ(poll(&descriptor, 1, kSoonMs), 1);
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Softmaster0"));
}

TEST_F(CardEvents, WithoutASubscriptionThereIsNothingToRead)
{
    const ControlPtr card = opened("default", SND_CTL_NONBLOCK);
    snd_ctl_event_t* event = nullptr;
    snd_ctl_event_alloca(&event);
    EXPECT_EQ(snd_ctl_read(card.get(), event), -EBADFD);
    snd_ctl_subscribe_events(card.get(), 1);
    write("default", "Softmaster", 1);
    snd_ctl_subscribe_events(card.get(), 0);
    EXPECT_EQ(snd_ctl_read(card.get(), event), -EBADFD);
    EXPECT_FALSE(wakes(card.get(), kNotMs));
    snd_ctl_subscribe_events(card.get(), 1);
    EXPECT_THAT(pendingEvents(card.get()), IsEmpty());
    write("default", "Softmaster", 2);
    EXPECT_TRUE(wakes(card.get()));
    EXPECT_THAT(pendingEvents(card.get()), ElementsAre("Softmaster"));
}

TEST_F(CardEvents, AClientThatOnlyReadsWaitsInTheRead)
{
    const ControlPtr card = subscribed("default", /*mode=*/0);
    std::thread writer{[] {
        std::this_thread::sleep_for(std::chrono::milliseconds{kNotMs});
        write("default", "Softmaster", 1);
    }};
    const auto before = workTime();
    EXPECT_EQ(nextEvent(card.get()), "Softmaster");
    EXPECT_LT(workTime() - before, std::chrono::milliseconds{kNotMs / 2});
    writer.join();
}

TEST_F(CardEvents, AWaitInTheReadEndsWithASignal)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    const ControlPtr card = subscribed("default", /*mode=*/0);
    std::atomic<bool> over{false};
    std::thread interrupter{[&over, reader = pthread_self()] {
        while (!over) {
            pthread_kill(reader, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds{1});
        }
    }};
    snd_ctl_event_t* event = nullptr;
    snd_ctl_event_alloca(&event);
    EXPECT_EQ(snd_ctl_read(card.get(), event), -EINTR);
    over = true;
    interrupter.join();
}

TEST_F(CardEvents, TheHighLevelInterfaceHearsThemThroughItsElements)
{
    snd_hctl_t* card = nullptr;
    ASSERT_EQ(snd_hctl_open(&card, "default", 0), 0);
    static Names changed;
    snd_hctl_set_callback(card, [](snd_hctl_t*, unsigned int, snd_hctl_elem_t* element) {
        snd_hctl_elem_set_callback(element, [](snd_hctl_elem_t* one, unsigned int mask) {
            if ((mask & SND_CTL_EVENT_MASK_VALUE) != 0)
                changed.push_back(snd_hctl_elem_get_name(one));
            return 0;
        });
        return 0;
    });
    ASSERT_EQ(snd_hctl_load(card), 0);
    writeElsewhere("default", "Softmaster0", 7);
    EXPECT_EQ(snd_hctl_wait(card, kSoonMs), 1);
    EXPECT_EQ(snd_hctl_handle_events(card), 1);
    EXPECT_THAT(changed, ElementsAre("Softmaster0"));
    snd_hctl_close(card);
}

TEST_F(CardEvents, AMixerFollowsTheVolumesThatOthersSet)
{
    snd_mixer_t* mixer = nullptr;
    ASSERT_EQ(snd_mixer_open(&mixer, 0), 0);
    ASSERT_EQ(snd_mixer_attach(mixer, "default"), 0);
    ASSERT_EQ(snd_mixer_selem_register(mixer, nullptr, nullptr), 0);
    ASSERT_EQ(snd_mixer_load(mixer), 0);
    snd_mixer_selem_id_t* id = nullptr;
    snd_mixer_selem_id_alloca(&id);
    snd_mixer_selem_id_set_name(id, "Master");
    snd_mixer_elem_t* master = snd_mixer_find_selem(mixer, id);
    ASSERT_NE(master, nullptr);
    writeElsewhere("default", "Master Playback Volume", 70);
    EXPECT_GE(snd_mixer_wait(mixer, kSoonMs), 0);
    EXPECT_EQ(snd_mixer_handle_events(mixer), 1);
    long volume = -1;
    snd_mixer_selem_get_playback_volume(master, SND_MIXER_SCHN_MONO, &volume);
    EXPECT_EQ(volume, 70);
    snd_mixer_close(mixer);
}

TEST_F(CardEvents, ManyWritersLoseNoElement)
{
    virtualtv::listen({}); // the test's own account is for one thread
    const ControlPtr card = subscribed("default");
    constexpr long kWrites = 100; // and the greatest value
    std::vector<std::thread> writers;
    for (const char* element : {"Softmaster", "Softmaster0", "Softmaster1"})
        writers.emplace_back([element] {
            const ControlPtr own = opened("default");
            for (long i = 1; i <= kWrites; ++i)
                write(own.get(), element, i);
        });
    // What is read after the last event of an element is its last value.
    const std::map<std::string, long> last = {
        {"Softmaster", kWrites}, {"Softmaster0", kWrites}, {"Softmaster1", kWrites}};
    std::map<std::string, long> seen;
    while (seen != last && wakes(card.get()))
        for (const std::string& name : pendingEvents(card.get())) {
            snd_ctl_elem_value_t* value = nullptr;
            snd_ctl_elem_value_alloca(&value);
            snd_ctl_elem_value_set_interface(value, SND_CTL_ELEM_IFACE_MIXER);
            snd_ctl_elem_value_set_name(value, name.c_str());
            ASSERT_EQ(snd_ctl_elem_read(card.get(), value), 0);
            seen[name] = snd_ctl_elem_value_get_integer(value, 0);
        }
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(seen, last);
}

TEST_F(CardEvents, AMachineShortOfWatchesStillTells)
{
    gShortOfWatches = true;
    const ControlPtr card = subscribed("default");
    pollfd descriptor = {};
    ASSERT_EQ(snd_ctl_poll_descriptors(card.get(), &descriptor, 1), 1);
    EXPECT_FALSE(gShortOfWatches) << "nobody asked for a watch";
    writeElsewhere("default", "Softmaster", 1);
    Names told;
    while (told.empty() && wakes(card.get()))
        told = pendingEvents(card.get());
    EXPECT_THAT(told, ElementsAre("Softmaster"));
}

TEST_F(CardEvents, AMachineShortOfWatchesKeepsNobodyLongerThanAsked)
{
    gShortOfWatches = true;
    const ControlPtr card = subscribed("default");
    alarm(20); // ends a wait that has no end
    wakes(card.get(), /*timeoutMs=*/300);
    EXPECT_THAT(pendingEvents(card.get()), IsEmpty());
    alarm(0);
}

TEST_F(CardEvents, NoDescriptorIsLeftOpen)
{
    const int before = dup(0);
    close(before);
    for (int i = 0; i < 3; ++i) {
        const ControlPtr card = subscribed("default");
        write("default", "Softmaster", i);
        wakes(card.get(), kNotMs);
    }
    const int after = dup(0);
    close(after);
    EXPECT_LE(after, before + 1); // the state file stays open
}
