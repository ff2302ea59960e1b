#include "records/json_codec.h"
#include "server/server_message.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

namespace {

/// The largest piece of memory that was asked for at once.
std::size_t largestRequest = 0;

void* take(std::size_t size) noexcept {
    largestRequest = std::max(largestRequest, size);
    return std::malloc(size);
}

void* takeOrThrow(std::size_t size) {
    if (void* const memory = take(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return takeOrThrow(size);
}
void* operator new[](std::size_t size) {
    return takeOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace zelkovanta::server {
namespace {

using testing::Ge;
using testing::Le;

std::string listOf(const std::string& element, int count) {
    std::string list = "[" + element;
    for (int index = 1; index < count; ++index) {
        list += "," + element;
    }
    return list + "]";
}

/// The snapshot of an office whose list of signals is this.
std::string snapshotWith(const std::string& signals) {
    return R"({"office":{"id":"o","name":"O"},"members":[],"rooms":[],"signalTypes":[],"signals":)" + signals +
           R"(,"device":{"id":"d","kind":"desktop_mac"}})";
}

struct ServerMessageMemoryTest : testing::Test {
    /// What reading a text may ask for at once: the parser's index of it is a few times its size.
    static auto isInProportionTo(const std::string& text) { return Le(16 * text.size()); }
};

TEST_F(ServerMessageMemoryTest, aLongListOfNothingAsksForNoMoreThanItsTextIsWorth) {
    const std::string zeros = listOf("0", 1'000'000);
    largestRequest = 0;
    const std::string snapshot = snapshotWith(zeros);
    ASSERT_THAT(largestRequest, Ge(snapshot.size())) << "nothing is counted";

    largestRequest = 0;
    EXPECT_FALSE(records::decodeJson<records::StateSnapshot>(snapshot).has_value());
    EXPECT_THAT(largestRequest, isInProportionTo(snapshot));

    const std::vector<std::string> frames{R"({"type":"snapshot","data":)" + snapshot + "}",
                                          R"({"type":"rooms.updated","data":{"rooms":)" + zeros + "}}",
                                          R"({"type":"types.updated","data":{"signalTypes":)" + zeros + "}}"};
    for (const std::string& frame : frames) {
        largestRequest = 0;
        EXPECT_FALSE(decodeServerMessage(frame).has_value()) << frame.substr(0, 60);
        EXPECT_THAT(largestRequest, isInProportionTo(frame)) << frame.substr(0, 60);
    }
}

TEST_F(ServerMessageMemoryTest, aLongListOfRoomsIsReadWhole) {
    const std::string frame =
        R"({"type":"rooms.updated","data":{"rooms":)" + listOf(R"({"id":"r","name":"Room"})", 20'000) + "}}";
    const auto message = decodeServerMessage(frame);
    ASSERT_TRUE(message.has_value());
    const auto& rooms = std::get<server_message::RoomsUpdated>(*message).rooms;
    ASSERT_EQ(rooms.size(), 20'000U);
    EXPECT_EQ(rooms.back().name, "Room");
}

}  // namespace
}  // namespace zelkovanta::server
