#!/usr/bin/python3
"""The office's console in a real browser: every action is clicked, and seen in the office and on the page.

    actions_test.py BUILD_FOLDER PICTURES_FOLDER [TEST...]
"""

import os
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from console_case import ConsoleTest, main  # noqa: E402
from office import Computer  # noqa: E402


class Computers(ConsoleTest):
    def test_a_waiting_computer_is_named_and_becomes_a_room_computer(self):
        computer = Computer(self.office, "Pamir").show_setup_code()
        row = "#waiting-list li"
        self.browser.reads(row, "Pamir")
        self.assertEqual(self.browser.text("#waiting-count"), "1")
        self.browser.type(f"{row} [name=name]", "Front desk")
        self.browser.choose(f"{row} [name=room]", "Room 3")
        self.browser.click(f"{row} button.main")
        self.browser.gone(row)
        self.assertTrue(computer.collect())
        entry = self.office.one("devices", "Front desk")
        self.assertEqual(entry["role"], "room")
        self.assertEqual(entry["device"]["roomId"], self.office.one("rooms", "Room 3")["id"])
        shown = f"#computer-list [data-device={computer.device['id']}]"
        self.browser.reads(shown, "Room computer · Room 3")
        self.browser.reads(f"{shown} [data-show=state]", "not connected")
        self.connected(computer)
        self.browser.until("it shows as connected",
                           lambda: self.browser.text(f"{shown} [data-show=state]") == "connected")
        computer.disconnect()
        self.browser.reads(f"{shown} [data-show=state]", "not connected")

    def test_one_of_two_becomes_a_shared_workstation_and_the_other_a_members(self):
        first = Computer(self.office, "Elbrus").show_setup_code()
        second = Computer(self.office, "Pamir").show_setup_code()
        self.browser.until("both wait", lambda: len(self.browser.find_all("#waiting-list li")) == 2)
        self.browser.choose("#waiting-list li:nth-child(2) [name=role]", "Somebody's own computer")
        self.browser.choose("#waiting-list li:nth-child(2) [name=member]", "Dr. Mei Tanaka")
        self.browser.click("#waiting-list li:nth-child(2) button.main")
        self.browser.until("one waits", lambda: len(self.browser.find_all("#waiting-list li")) == 1)
        self.browser.choose("#waiting-list [name=role]", "Shared workstation")
        self.browser.choose("#waiting-list [name=room]", "No fixed room")
        self.browser.click("#waiting-list button.main")
        self.browser.gone("#waiting-list li")
        self.assertTrue(first.collect() and second.collect())
        self.assertEqual(self.office.one("devices", "Pamir")["device"]["memberId"],
                         self.office.one("members", "Dr. Mei Tanaka")["id"])
        self.assertEqual(self.office.one("devices", "Elbrus")["role"], "shared")
        self.assertNotIn("roomId", self.office.one("devices", "Elbrus")["device"])

    def test_what_somebody_types_survives_what_happens_meanwhile(self):
        Computer(self.office, "Pamir").show_setup_code()
        self.browser.type("#waiting-list [name=name]", "Half a na")
        self.browser.choose("#waiting-list [name=room]", "Room 4")
        Computer(self.office, "Elbrus").show_setup_code()
        self.office.command("add-room", "Sun room")
        self.browser.until("the new room is offered", lambda: any(
            option.text == "Sun room" for option in self.browser.find_all("#waiting-list [name=room] option")))
        self.assertEqual(self.browser.run("return document.activeElement.name"), "room")
        self.assertEqual(self.browser.there("#waiting-list [name=name]").get_attribute("value"), "Half a na")
        self.assertEqual(self.browser.there("#waiting-list [name=room]").get_attribute("value"),
                         self.office.one("rooms", "Room 4")["id"])

    def test_a_pairing_code_is_made_and_works_once(self):
        self.browser.type("#code-form [name=name]", "Imaging desk")
        self.browser.choose("#code-form [name=role]", "Room computer")
        self.browser.choose("#code-form [name=room]", "Imaging")
        self.browser.click("#code-form button")
        self.browser.until("the code shows", lambda: len(self.browser.text("#code-value")) == 9)
        self.browser.reads("#code-list", "Imaging desk")
        code = self.browser.text("#code-value")
        computer = Computer(self.office, "Pamir")
        self.assertTrue(computer.redeem(code))
        self.connected(computer)
        self.assertFalse(Computer(self.office, "Elbrus").redeem(code))
        self.browser.gone("#code-list li")
        self.browser.there("#computer-list [data-name='Imaging desk']")

    def test_unlinking_sends_a_computer_away(self):
        computer = self.connected(self.paired("Pamir", "--role", "shared"))
        self.browser.click("#computer-list [data-name=Pamir] [data-action=unlink]")
        self.browser.gone("#computer-list li")
        self.assertEqual(computer.close_code(), 4001)
        self.assertEqual(computer.ask("GET", "state")["error"], "invalid_token")
        self.assertEqual(self.office.state()["devices"], [])

    def test_a_computer_moves_to_another_practice(self):
        computer = self.connected(self.paired("Pamir", "--role", "room", "--room", "Room 1"))
        row = "#computer-list [data-name=Pamir]"
        self.browser.click(f"{row} summary")
        self.browser.choose(f"{row} [name=practice]", "Lakeside Family Practice")
        self.browser.choose(f"{row} [name=place]", "Exam B")
        self.browser.click(f"{row} form button")
        self.browser.gone("#computer-list li")
        self.assertEqual(computer.until("snapshot")["office"]["slug"], "lakeside")
        self.browser.choose("#practice", "Lakeside Family Practice")
        self.browser.reads("#computer-list [data-name=Pamir]", "Room computer · Exam B")
        self.assertTrue(self.office.one("devices", "Pamir", "Lakeside Family Practice"))

    def test_a_refusal_is_told_and_can_be_closed(self):
        self.paired("Pamir", "--role", "member", "--member", "Sofia Marino")
        row = "#computer-list [data-name=Pamir]"
        self.browser.click(f"{row} summary")
        self.office.command("revoke", "Pamir")
        self.browser.gone(row)
        self.browser.type("#phone-code-form [name=code]", "zvq_never")
        self.browser.click("#phone-code-form button")
        self.refused("There is no such code.")
        self.browser.click("#message button")
        self.browser.until("the message is closed", lambda: not self.browser.find("#message").is_displayed())


class Phones(ConsoleTest):
    def test_a_phone_scans_a_stations_code_and_signs_out(self):
        station = self.connected(self.paired("Hallway", "--role", "shared"))
        self.phone_of("Sofia Marino")
        row = "#station-list li"
        self.browser.reads(row, "shows no code")
        self.assertFalse(self.browser.there(f"{row} [data-action=scan]").is_enabled())
        station.show_sign_in_code()
        self.browser.click(f"{row} [data-action=scan]")
        self.assertEqual(station.until("session.started")["member"]["name"], "Sofia Marino")
        self.browser.reads(row, "signed in here")
        self.browser.reads("#computer-list [data-name=Hallway]", "Sofia Marino is signed in")
        self.browser.click(f"{row} [data-action=sign-out]")
        station.until("session.ended")
        self.browser.reads("#computer-list [data-name=Hallway]", "Nobody is signed in")
        self.assertNotIn("signedInMemberId", self.office.one("devices", "Hallway")["device"])

    def test_a_code_read_from_the_screen_signs_in_as_well(self):
        station = self.connected(self.paired("Hallway", "--role", "shared"))
        token = station.show_sign_in_code()
        self.phone_of("Caleb Wright")
        self.browser.type("#phone-code-form [name=code]", f"zelkovanta://signin?token={token}")
        self.browser.click("#phone-code-form button")
        self.assertEqual(station.until("session.started")["member"]["name"], "Caleb Wright")
        self.browser.click("#computer-list [data-name=Hallway] [data-action=sign-out]")
        station.until("session.ended")

    def test_a_phone_sends_another_acknowledges_and_is_done(self):
        self.phone_of("Priya Raman")
        self.browser.choose("#send-form [name=room]", "Room 3")
        self.browser.choose("#send-form [name=type]", "Urgent")
        self.browser.choose("#send-form [name=to]", "Dr. Mei Tanaka")
        self.browser.type("#send-form [name=note]", "Bite wings <b>are</b> up")
        self.browser.click("#send-form button")
        self.browser.reads("#queue-list", "Bite wings <b>are</b> up")
        signal = self.office.state()["signals"][0]
        self.assertEqual(signal["requesterId"], self.office.one("members", "Priya Raman")["id"])
        self.assertEqual(signal["providerId"], self.office.one("members", "Dr. Mei Tanaka")["id"])
        self.assertEqual(self.browser.there("#send-form [name=note]").get_attribute("value"), "")
        self.phone_of("Dr. Mei Tanaka")
        row = f"#phone-signals [data-signal={signal['id']}]"
        self.browser.click(f"{row} [data-action=acknowledge]")
        self.browser.reads("#queue-list", "Dr. Mei Tanaka is on the way")
        self.assertEqual(self.office.state()["signals"][0]["status"], "acknowledged")
        self.browser.click(f"{row} [data-action=done]")
        self.browser.gone("#queue-list li")
        self.assertEqual(self.office.state()["cleared"][0]["clearedBy"], signal["providerId"])
        self.browser.click("#cleared summary")
        self.browser.reads("#cleared-list", "done by Dr. Mei Tanaka")

    def test_a_call_to_a_department_rings_on_its_phones_and_is_taken_back_by_its_sender(self):
        self.phone_of("Dr. Amara Okafor")
        self.browser.choose("#send-form [name=to]", "All: Hygienists")
        self.browser.choose("#send-form [name=type]", "X-ray needed")
        self.browser.click("#send-form button")
        self.browser.there("#queue-list li")
        self.phone_of("Sofia Marino")
        self.browser.there("#phone-signals [data-action=acknowledge]")
        self.phone_of("Priya Raman")
        self.browser.gone("#phone-signals li")
        self.phone_of("Dr. Amara Okafor")
        self.browser.click("#phone-signals [data-action=cancel]")
        self.browser.gone("#queue-list li")
        self.assertEqual(self.office.state()["cleared"][0]["status"], "canceled")

    def test_walking_into_a_room_clears_what_calls_there(self):
        self.office.command("send", "--room", "Room 1", "--type", "ready")
        here = self.office.command("send", "--room", "Room 2", "--type", "ready", "--to", "Dr. Mei Tanaka")
        self.phone_of("Dr. Mei Tanaka")
        self.browser.choose("#walk-form [name=room]", "Room 2")
        self.browser.click("#walk-form button")
        self.browser.gone(f"#queue-list [data-signal={here}]")
        state = self.office.state()
        self.assertEqual([(each["id"], each["clearedBy"]) for each in state["cleared"]], [(here, "ble")])
        self.assertEqual(len(state["signals"]), 1)
        self.browser.click("#cleared summary")
        self.browser.reads("#cleared-list", "arrived (beacon)")

    def test_a_phone_changes_its_status_but_not_in_a_cooldown(self):
        self.phone_of("Sofia Marino")
        self.browser.click("#phone-status [data-status=dnd]")
        self.browser.there("#phone-status [data-status=dnd][aria-pressed=true]")
        self.assertEqual(self.office.one("members", "Sofia Marino")["status"], "dnd")
        self.office.command("member", "Sofia Marino", "--off-shift", "--cooldown", "5")
        self.browser.click("#phone-status [data-status=available]")
        self.refused("That member is in a cooldown.")
        self.assertEqual(self.office.one("members", "Sofia Marino")["status"], "dnd")

    def test_the_queue_is_served_by_the_admin_too(self):
        first = self.office.command("send", "--room", "Room 1", "--type", "ready")
        second = self.office.command("send", "--room", "Room 2", "--type", "ready")
        self.browser.until("both show", lambda: self.browser.text("#queue-count") == "2")
        self.browser.click(f"#queue-list [data-signal={first}] [data-action=done]")
        self.browser.gone(f"#queue-list [data-signal={first}]")
        self.browser.click(f"#queue-list [data-signal={second}] [data-action=cancel]")
        self.browser.gone("#queue-list li")
        self.assertEqual([each["status"] for each in self.office.state()["cleared"]], ["canceled", "done"])


class Practices(ConsoleTest):
    def row(self, kind, name):
        records, lists = {"room": ("rooms", "room"), "member": ("members", "member"),
                          "type": ("signalTypes", "type")}[kind]
        return f"#{lists}-list [data-{kind}={self.office.one(records, name)['id']}]"

    def test_rooms_are_added_renamed_and_put_out_of_use(self):
        computer = self.connected(self.paired("Pamir", "--role", "shared"))
        self.browser.type("#room-form [name=name]", "Sun room")
        self.browser.click("#room-form button")
        self.browser.until("the room is there", lambda: any(
            field.get_attribute("value") == "Sun room" for field in self.browser.find_all("#room-list input")))
        row = self.row("room", "Sun room")
        self.browser.type(f"{row} input", "Moon room")
        self.browser.click(f"{row} form button")
        self.browser.there("#room-list [aria-label='Name of Moon room']")
        self.browser.click(f"{row} [data-action=active]")
        self.browser.there(f"{row}.off")
        self.assertIs(self.office.one("rooms", "Moon room")["active"], False)
        while not any(room["name"] == "Moon room" and not room["active"]
                      for room in computer.until("rooms.updated")["rooms"]):
            pass
        self.browser.click(f"{row} [data-action=active]")
        self.browser.gone(f"{row}.off")

    def test_staff_comes_goes_and_rests(self):
        self.browser.type("#member-form [name=name]", "Ada Lovell")
        self.browser.choose("#member-form [name=department]", "Nurse")
        self.browser.click("#member-form button")
        self.browser.reads("#member-list", "Ada Lovell")
        row = self.row("member", "Ada Lovell")
        self.browser.click(f"{row} [data-action=shift]")
        self.browser.reads(row, "off shift")
        self.assertIs(self.office.one("members", "Ada Lovell")["onShift"], False)
        self.browser.click(f"{row} [data-action=shift]")
        self.browser.until("she is back", lambda: "off shift" not in self.browser.text(row))
        self.browser.click(f"{row} [data-action=phone]")
        self.browser.there(f"#phone[data-member={self.office.one('members', 'Ada Lovell')['id']}]")
        self.browser.click(f"{row} summary")
        self.browser.click(f"{row} [data-action=cooldown]")
        self.browser.reads(row, "cooldown")
        self.assertIn("cooldownUntil", self.office.one("members", "Ada Lovell"))
        self.browser.click(f"{row} [data-action=cooldown]")
        self.browser.until("the cooldown is over", lambda: "cooldown " not in self.browser.text(f"{row} [data-show=facts]"))
        self.browser.click(f"{row} [data-action=active]")
        self.browser.there(f"{row}.off")
        self.assertIs(self.office.one("members", "Ada Lovell")["active"], False)

    def test_kinds_are_renamed_coloured_and_put_out_of_use(self):
        row = self.row("type", "Urgent")
        self.browser.type(f"{row} [name=label]", "Come now")
        self.browser.run("arguments[0].value = '#ff0000'", self.browser.there(f"{row} [name=color]"))
        self.browser.click(f"{row} form button")
        self.browser.there("#type-list [aria-label='Save Come now']")
        self.assertEqual(self.office.one("signalTypes", "Come now")["color"], "#FF0000")
        self.browser.click(f"{row} [data-action=active]")
        self.browser.there(f"{row}.off")
        self.assertNotIn("Come now", self.browser.text("#send-form [name=type]"))

    def test_the_practices_name_and_rules_change(self):
        computer = self.connected(self.paired("Pamir", "--role", "room", "--room", "Room 1"))
        self.browser.type("#practice-form [name=name]", "Harbour & Sons")
        self.browser.type("#practice-form [name=autoExpireMinutes]", "7")
        self.browser.click("#practice-form button")
        self.browser.reads("#practice", "Harbour & Sons")
        self.assertEqual(computer.until("office.updated")["office"]["settings"]["autoExpireMinutes"], 7)
        self.browser.click("#rule-sender")
        self.browser.reads("#station-list", "Pamir")
        self.browser.click("#rule-open")
        self.browser.until("both rules are kept", lambda: {"requireSignedInSender": True, "allowAnyProvider": False}
                           .items() <= self.office.state("Harbour & Sons")["office"]["settings"].items())

    def test_a_release_is_announced_and_withdrawn(self):
        computer = self.connected(self.paired("Pamir", "--role", "shared"))
        for name, value in (("version", "1.2.0"), ("build", "120"), ("url", "https://updates.example/z.dmg")):
            self.browser.type(f"#release-form [name={name}]", value)
        self.browser.click("#release-form button.main")
        self.browser.reads("#release-now", "1.2.0 (build 120)")
        self.assertEqual(computer.until("desktop.release")["desktopRelease"]["macos"]["build"], 120)
        self.browser.click("#release-withdraw")
        self.browser.reads("#release-now", "None.")
        self.assertIsNone(self.office.state()["release"])

    def test_the_other_practice_has_its_own_of_everything(self):
        self.office.command("send", "--room", "Room 1", "--type", "ready")
        self.browser.there("#queue-list li")
        self.browser.choose("#practice", "Lakeside Family Practice")
        self.browser.gone("#queue-list li")
        self.browser.reads("#member-list", "Dr. Ruth Adeyemi")
        self.assertNotIn("Sofia Marino", self.browser.text("#member-list"))
        self.browser.type("#room-form [name=name]", "Exam C")
        self.browser.click("#room-form button")
        self.browser.there("#room-list [aria-label='Name of Exam C']")
        self.assertTrue(self.office.one("rooms", "Exam C", "Lakeside Family Practice"))


main()
