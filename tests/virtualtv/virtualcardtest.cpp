// SPDX-License-Identifier: Apache-2.0
#include "virtualcardtest.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "journal.h"

// --- One element through libasound

IdPtr identifierOf(const Id& wanted)
{
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_malloc(&id);
    snd_ctl_elem_id_set_interface(id, wanted.interface);
    snd_ctl_elem_id_set_name(id, wanted.name.c_str());
    snd_ctl_elem_id_set_index(id, wanted.index);
    snd_ctl_elem_id_set_numid(id, wanted.number);
    return IdPtr{id};
}

Id byNumber(unsigned int number)
{
    Id id{""};
    id.number = number;
    return id;
}

void setIntegers(snd_ctl_elem_value_t* value, const Values& integers)
{
    for (unsigned int i = 0; i < integers.size(); ++i)
        snd_ctl_elem_value_set_integer(value, i, integers[i]);
}

void getIntegers(const snd_ctl_elem_value_t* value, Values& integers)
{
    for (unsigned int i = 0; i < integers.size(); ++i)
        integers[i] = snd_ctl_elem_value_get_integer(value, i);
}

int openStatus(const std::string& card)
{
    snd_ctl_t* opened = nullptr;
    const int status = snd_ctl_open(&opened, card.c_str(), 0);
    const ControlPtr handle{opened};
    return status;
}

int writeTo(snd_ctl_t* card, const Id& id, const Values& values)
{
    snd_ctl_elem_value_t* written = nullptr;
    snd_ctl_elem_value_alloca(&written);
    snd_ctl_elem_value_set_id(written, identifierOf(id).get());
    setIntegers(written, values);
    return snd_ctl_elem_write(card, written);
}

int readFrom(snd_ctl_t* card, const Id& id, Values& values)
{
    snd_ctl_elem_value_t* got = nullptr;
    snd_ctl_elem_value_alloca(&got);
    snd_ctl_elem_value_set_id(got, identifierOf(id).get());
    const int status = snd_ctl_elem_read(card, got);
    getIntegers(got, values);
    return status;
}

Values valuesOf(snd_ctl_t* card, const Id& id, std::size_t count)
{
    Values values(count, -99);
    EXPECT_EQ(readFrom(card, id, values), 0) << id.name;
    return values;
}

long valueOf(snd_ctl_t* card, const Id& id)
{
    return valuesOf(card, id, 1).front();
}

Information information(snd_ctl_t* card, const Id& id)
{
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_info_set_id(info, identifierOf(id).get());
    Information all;
    all.status = snd_ctl_elem_info(card, info);
    if (all.status < 0)
        return all;
    all.name = snd_ctl_elem_info_get_name(info);
    all.interface = snd_ctl_elem_info_get_interface(info);
    all.type = snd_ctl_elem_info_get_type(info);
    all.count = snd_ctl_elem_info_get_count(info);
    all.readable = snd_ctl_elem_info_is_readable(info) != 0;
    all.writable = snd_ctl_elem_info_is_writable(info) != 0;
    if (all.type == SND_CTL_ELEM_TYPE_INTEGER) {
        all.minimum = snd_ctl_elem_info_get_min(info);
        all.maximum = snd_ctl_elem_info_get_max(info);
    }
    return all;
}

int list(snd_ctl_t* card, unsigned int space, unsigned int offset, std::vector<Id>& found)
{
    snd_ctl_elem_list_t* elements = nullptr;
    snd_ctl_elem_list_alloca(&elements);
    snd_ctl_elem_list_set_offset(elements, offset);
    if (space > 0 && snd_ctl_elem_list_alloc_space(elements, space) < 0)
        return -ENOMEM;
    const int status = snd_ctl_elem_list(card, elements);
    for (unsigned int i = 0; status >= 0 && i < snd_ctl_elem_list_get_used(elements); ++i) {
        Id id{snd_ctl_elem_list_get_name(elements, i)};
        id.interface = snd_ctl_elem_list_get_interface(elements, i);
        id.index = snd_ctl_elem_list_get_index(elements, i);
        id.number = snd_ctl_elem_list_get_numid(elements, i);
        found.push_back(id);
    }
    snd_ctl_elem_list_free_space(elements);
    return status;
}

std::vector<Id> elementsOf(snd_ctl_t* card)
{
    std::vector<Id> found;
    EXPECT_EQ(list(card, 100, 0, found), 0);
    return found;
}

// --- Other processes

Neighbour::Neighbour(const std::function<bool()>& work)
{
    std::array<int, 2> ends{};
    std::array<int, 2> lives{}; // closed by the kernel when the process ends
    EXPECT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(pipe(lives.data()), 0);
    mProcess = fork();
    if (mProcess == 0) {
        virtualtv::listen({});
        close(ends[1]);
        char go = 0;
        const bool told = ::read(ends[0], &go, 1) == 1;
        _exit(told && work() ? 0 : 1);
    }
    close(ends[0]);
    close(lives[1]);
    mGo = ends[1];
    mLives = lives[0];
}

Neighbour::~Neighbour()
{
    if (mProcess > 0)
        succeeds();
    close(mLives);
}

void Neighbour::start()
{
    EXPECT_EQ(::write(mGo, "g", 1), 1);
    close(std::exchange(mGo, -1));
}

bool Neighbour::endsWithin(int milliseconds) const
{
    pollfd ended{mLives, POLLIN, 0};
    return poll(&ended, 1, milliseconds) != 0;
}

bool Neighbour::succeeds()
{
    if (mGo >= 0)
        close(std::exchange(mGo, -1));
    int status = 0;
    waitpid(std::exchange(mProcess, -1), &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool Neighbour::works()
{
    start();
    return succeeds();
}

// --- What the cards hold

std::ostream& operator<<(std::ostream& stream, const ElementRow& row)
{
    return stream << row.name << " type " << row.type << " count " << row.count << " from "
                  << row.minimum << " to " << row.maximum;
}
