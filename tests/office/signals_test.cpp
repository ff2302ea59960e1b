#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SignalsTest : public OfficeTest {
protected:
    std::string memberId(std::string_view name) const { return named<Member>(name).id; }
    std::string roomId(std::string_view name) const { return named<Room>(name).id; }

    Computer room = pairRoom("Room 3");
    Computer doctor = pairMember("Dr. Amara Okafor");
};

TEST_F(SignalsTest, aRoomComputerSendsForItsRoomAndEveryComputerOfThePracticeHearsOfIt) {
    const Computer elsewhere = pairRoom("Exam A", "Lakeside Family Practice");
    now += seconds{90} + std::chrono::milliseconds{7};
    const json::value signal = sendReady(room, {{"note", "BP 120/80"}});
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(at(signal, "status"), "waiting");
    EXPECT_EQ(at(signal, "roomId"), roomId("Room 3"));
    EXPECT_EQ(at(signal, "note"), "BP 120/80");
    EXPECT_EQ(at(signal, "createdAt"), "2026-03-09T08:01:30.007Z");
    for (const char* absent : {"requesterId", "providerId", "providerIds", "toDepartment", "acknowledgedAt",
                               "acknowledgedBy", "clearedAt", "clearedBy"}) {
        EXPECT_EQ(at(signal, absent), "<none>") << absent;
    }
    ASSERT_THAT(kinds(), ElementsAre("signal.created"));
    EXPECT_EQ(frameIn(answer.effects[0]).at("data").at("signal"), signal);
    EXPECT_THAT(receivers(answer.effects[0]), UnorderedElementsAre(room.id, doctor.id));
    EXPECT_EQ(stateAt(doctor).at("signals"), json::value(json::array{signal}));
    EXPECT_EQ(stateAt(elsewhere).at("signals"), json::value(json::array()));
}

TEST_F(SignalsTest, anEmptyNoteIsNoNote) {
    EXPECT_EQ(at(sendReady(room), "note"), "<none>");
}

TEST_F(SignalsTest, aMembersComputerSendsInTheMembersNameAndMustNameARoom) {
    sendReady(doctor);
    EXPECT_EQ(verdict(), "400 room_required");
    const json::value signal = sendReady(doctor, {{"roomId", roomId("Room 1")}});
    EXPECT_EQ(at(signal, "requesterId"), memberId("Dr. Amara Okafor"));
}

TEST_F(SignalsTest, theAddressDecidesWhoIsCalled) {
    const std::string sofia = memberId("Sofia Marino");
    const std::string caleb = memberId("Caleb Wright");
    const json::value one = sendReady(room, {{"providerId", sofia}});
    EXPECT_EQ(at(one, "providerId"), sofia);
    EXPECT_EQ(at(one, "providerIds"), "<none>");
    const json::value two = sendReady(room, {{"providerIds", json::array{sofia, caleb, sofia}}});
    EXPECT_EQ(two.at("providerIds"), json::value(json::array{sofia, caleb}));
    EXPECT_EQ(at(two, "providerId"), "<none>");
}

TEST_F(SignalsTest, aDepartmentMeansThoseOfItWhoAreOnShiftNow) {
    (void)office->changeMember({}, "Lena Vogel", {.onShift = false}, now);
    const json::value signal = sendReady(room, {{"toDepartment", "assistant"}});
    EXPECT_EQ(at(signal, "toDepartment"), "assistant");
    EXPECT_EQ(signal.at("providerIds"), json::value(json::array{memberId("Priya Raman"), memberId("Tomás Herrera")}));

    (void)office->changeMember({}, "Noor Haddad", {.onShift = false}, now);
    sendReady(room, {{"toDepartment", "sterilisation"}});
    EXPECT_EQ(verdict(), "409 nobody_on_shift");
    sendReady(room, {{"toDepartment", "gardening"}});
    EXPECT_EQ(verdict(), "404 unknown_department");
}

TEST_F(SignalsTest, theProvidersDepartmentIsAnOpenCall) {
    const json::value signal = sendReady(room, {{"toDepartment", "provider"}});
    EXPECT_EQ(at(signal, "toDepartment"), "provider");
    EXPECT_EQ(at(signal, "providerIds"), "<none>");
}

TEST_F(SignalsTest, whereNotJustAnybodyMayComeAnOpenCallIsRefused) {
    (void)office->changePractice({}, {.allowAnyProvider = false}, now);
    sendReady(room);
    EXPECT_EQ(verdict(), "400 bad_request");
    sendReady(room, {{"toDepartment", "provider"}});
    EXPECT_EQ(verdict(), "201");
}

TEST_F(SignalsTest, twoKindsOfAddressAtOnceAreRefused) {
    sendReady(room, {{"providerId", memberId("Sofia Marino")}, {"toDepartment", "nurse"}});
    EXPECT_EQ(verdict(), "400 bad_request");
}

TEST_F(SignalsTest, somebodyOffShiftCannotBeCalled) {
    sendReady(room, {{"providerId", memberId("Dr. Paul Brandt")}});
    EXPECT_EQ(verdict(), "409 provider_off_shift");
    sendReady(room, {{"providerIds", json::array{memberId("Sofia Marino"), memberId("Dr. Paul Brandt")}}});
    EXPECT_EQ(verdict(), "409 provider_off_shift");
}

TEST_F(SignalsTest, aRoomHasOneActiveSignalOfAKindAndAddress) {
    const json::value first = sendReady(room);
    sendReady(room, {{"note", "another note"}});
    EXPECT_EQ(verdict(), "409 duplicate_active_signal");
    sendReady(room, {{"providerId", memberId("Sofia Marino")}});
    EXPECT_EQ(verdict(), "201");
    sendReady(room, {{"roomId", roomId("Room 4")}});
    EXPECT_EQ(verdict(), "201");
    act(doctor, at(first, "id"), "acknowledge");
    sendReady(room);
    EXPECT_EQ(verdict(), "409 duplicate_active_signal");
    act(doctor, at(first, "id"), "done");
    sendReady(room);
    EXPECT_EQ(verdict(), "201");
}

TEST_F(SignalsTest, onlyTheDepartmentsOfAKindSendIt) {
    const Computer desk = pairMember("Hannah Cole");
    const auto sendXray = [&](const Computer& from) {
        call("POST", "signals", from,
             json::serialize(
                 json::object{{"typeId", named<SignalType>("xray").id}, {"note", ""}, {"roomId", roomId("Room 1")}}));
        return verdict();
    };
    EXPECT_EQ(sendXray(desk), "403 sender_not_allowed");
    EXPECT_EQ(sendXray(doctor), "201");
}

TEST_F(SignalsTest, whatDoesNotExistOrIsNotInUseCannotBeUsed) {
    const auto sent = [&](json::object fields) {
        fields.emplace("note", "");
        call("POST", "signals", room, json::serialize(fields));
        return verdict();
    };
    const std::string ready = named<SignalType>("ready").id;
    EXPECT_EQ(sent({{"typeId", "type_none"}}), "404 unknown_type");
    EXPECT_EQ(sent({{"typeId", named<SignalType>("ready", "Lakeside Family Practice").id}}), "404 unknown_type");
    EXPECT_EQ(sent({{"typeId", ready}, {"roomId", named<Room>("Exam A", "Lakeside Family Practice").id}}),
              "404 unknown_room");
    EXPECT_EQ(sent({{"typeId", ready}, {"providerId", "mem_none"}}), "404 unknown_member");
    (void)office->changeRoom({}, "Room 3", {.active = false}, now);
    EXPECT_EQ(sent({{"typeId", ready}}), "409 room_inactive");
    (void)office->changeRoom({}, "Room 3", {.active = true}, now);
    (void)office->changeType({}, "ready", {.active = false}, now);
    EXPECT_EQ(sent({{"typeId", ready}}), "409 type_inactive");
    EXPECT_THAT(office->state().all<Signal>(), IsEmpty());
}

TEST_F(SignalsTest, aNoteHasAtMostTwoHundredCharactersWhateverTheirBytes) {
    std::string note;
    for (int count = 0; count < 200; ++count) {
        note += "ß";
    }
    EXPECT_EQ(at(sendReady(room, {{"note", note}}), "note"), note);
    sendReady(room, {{"note", note + "a"}, {"roomId", roomId("Room 1")}});
    EXPECT_EQ(verdict(), "400 bad_request");
}

TEST_F(SignalsTest, whoeverTakesASignalIsNamedAndWhoeverEndsItToo) {
    const std::string id = at(sendReady(room), "id");
    now += seconds{30};
    const json::value taken = act(doctor, id, "acknowledge");
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(taken, "status"), "acknowledged");
    EXPECT_EQ(at(taken, "acknowledgedBy"), memberId("Dr. Amara Okafor"));
    EXPECT_EQ(at(taken, "acknowledgedAt"), "2026-03-09T08:00:30.000Z");
    ASSERT_THAT(kinds(), ElementsAre("signal.updated"));
    EXPECT_EQ(frameIn(answer.effects[0]).at("data").at("signal"), taken);

    now += seconds{30};
    const json::value done = act(doctor, id, "done");
    EXPECT_EQ(at(done, "status"), "done");
    EXPECT_EQ(at(done, "clearedAt"), "2026-03-09T08:01:00.000Z");
    EXPECT_EQ(at(done, "clearedBy"), memberId("Dr. Amara Okafor"));
    EXPECT_THAT(kinds(), ElementsAre("signal.updated"));
    EXPECT_EQ(stateAt(room).at("signals"), json::value(json::array()));
}

TEST_F(SignalsTest, aRoomComputerActsWithoutAName) {
    const std::string id = at(sendReady(room), "id");
    EXPECT_EQ(at(act(room, id, "acknowledge"), "acknowledgedBy"), "<none>");
    const json::value canceled = act(room, id, "cancel");
    EXPECT_EQ(at(canceled, "status"), "canceled");
    EXPECT_EQ(at(canceled, "clearedBy"), "<none>");
}

TEST_F(SignalsTest, takingTwiceIsTakingOnce) {
    const std::string id = at(sendReady(room), "id");
    const json::value first = act(doctor, id, "acknowledge");
    now += seconds{9};
    EXPECT_EQ(act(doctor, id, "acknowledge"), first);
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(kinds(), IsEmpty());
    act(pairMember("Dr. Mei Tanaka"), id, "acknowledge");
    EXPECT_EQ(verdict(), "409 already_acknowledged");
}

TEST_F(SignalsTest, whatIsOverStaysOver) {
    for (const char* end : {"done", "cancel"}) {
        const std::string id = at(sendReady(room), "id");
        act(doctor, id, end);
        for (const char* action : {"acknowledge", "done", "cancel"}) {
            act(doctor, id, action);
            EXPECT_EQ(verdict(), "409 already_cleared");
        }
    }
    const std::string expired = at(sendReady(room), "id");
    now += minutes{45};
    (void)office->tick(now);
    act(doctor, expired, "done");
    EXPECT_EQ(verdict(), "409 already_cleared");
}

TEST_F(SignalsTest, unknownSignalsAndActionsAreRefused) {
    act(doctor, "sig_none", "done");
    EXPECT_EQ(verdict(), "404 unknown_signal");
    const std::string id = at(sendReady(room), "id");
    act(doctor, id, "explode");
    EXPECT_EQ(verdict(), "400 bad_request");
    act(pairRoom("Exam A", "Lakeside Family Practice"), id, "done");
    EXPECT_EQ(verdict(), "404 unknown_signal");
}

TEST_F(SignalsTest, anArrivalSeenByTheBeaconEndsASignalAsDone) {
    const std::string id = at(sendReady(room), "id");
    const json::value signal = keep(office->act(id, SignalAction::arrived, {}, now));
    EXPECT_EQ(at(signal, "status"), "done");
    EXPECT_EQ(at(signal, "clearedBy"), "ble");
}

TEST_F(SignalsTest, anAdminSendsAndActsByName) {
    const json::value signal = keep(office->send({.practice = {},
                                                  .room = "room 3",
                                                  .type = "Urgent",
                                                  .from = "Grace Mbeki",
                                                  .to = {"Sofia Marino", "Caleb Wright"},
                                                  .toDepartment = {},
                                                  .note = "quick"},
                                                 now));
    EXPECT_EQ(at(signal, "requesterId"), memberId("Grace Mbeki"));
    EXPECT_THAT(kinds(), ElementsAre("signal.created"));
    EXPECT_EQ(at(keep(office->act(at(signal, "id"), SignalAction::acknowledge, "Sofia Marino", now)), "acknowledgedBy"),
              memberId("Sofia Marino"));
    keep(office->act(at(signal, "id"), SignalAction::done, "Nobody", now));
    EXPECT_EQ(verdict(), "404 unknown_member");
    keep(office->act("sig_none", SignalAction::done, {}, now));
    EXPECT_EQ(verdict(), "404 unknown_signal");
    keep(office->send(
        {.practice = "Nowhere", .room = "r", .type = "t", .from = {}, .to = {}, .toDepartment = {}, .note = {}}, now));
    EXPECT_EQ(verdict(), "404 unknown_practice");
}

}  // namespace
}  // namespace zelkovanta::office
