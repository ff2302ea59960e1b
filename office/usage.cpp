#include "office/command_line.h"

namespace zelkovanta::office {

std::string usageText() {
    return R"(zelkovanta-office: a local office for trying out, developing and testing

  zelkovanta-office [serve] --database FILE [--port 8787] [--listen 127.0.0.1] [--sample harbour] [--quiet]
          [--certificate FILE --key FILE] [--app-check-file FILE] [--no-console]
      Runs the office until it is interrupted. Port 0 takes any that is free. Its address in a browser of this
      machine is the web console. With a certificate and its key (PEM) the office speaks https. With an app-check
      file only programs that know its first line can pair.
      Prints "listening on http://ADDRESS:PORT" once it is ready.

All other commands ask a running office, and need to know which:
      --database FILE, or --server URL --admin-token-file FILE

  waiting                       computers that wait to be set up: request, name, time
  approve [REQUEST] --role room|member|shared [--room ROOM] [--member MEMBER] [--name COMPUTER]
          [--practice PRACTICE] [--wait SECONDS]
                                sets up a computer, named by its request or its name; else the oldest one
  code --role … (as approve)    makes a pairing code and prints it
  signin COMPUTER MEMBER        signin-code TOKEN MEMBER        signout COMPUTER
  scan COMPUTER MEMBER          signs in with the code that the computer shows, as a phone held before it
  revoke COMPUTER               move COMPUTER PRACTICE [--room ROOM] [--member MEMBER] [--notice snapshot|office]
  send --room ROOM --type TYPE [--from MEMBER] [--to MEMBER]… [--department KEY] [--note TEXT]
                                sends a signal and prints its id
  acknowledge SIGNAL [--by MEMBER]      done …      cancel …      arrived …
  walk MEMBER ROOM              a phone comes into a room: what called for its owner there is cleared by the beacon
  member MEMBER [--status available|busy|dnd] [--on-shift|--off-shift] [--reason WORD] [--cooldown MINUTES]
          [--active|--inactive] [--rename NAME] [--department KEY] [--color COLOR] [--admin yes|no]
          [--alerts yes|no] [--sound NAME]
  add-member NAME DEPARTMENT
  room ROOM [--activate|--deactivate] [--rename NAME] [--beacon UUID]
  add-room NAME
  type TYPE [--activate|--deactivate] [--label TEXT] [--color COLOR] [--priority N] [--order N]
  practice [PRACTICE] [--expire MINUTES] [--any-provider yes|no] [--signed-in-sender yes|no] [--rename NAME]
          [--vertical WORD]
  announce release --version VERSION --build N --url URL [--sha256 DIGEST] [--windows VERSION]
  announce none
  state                         everything, as JSON

Names of members, rooms, types and practices may be given instead of their ids. Commands about a practice
mean the first one unless --practice names another.
)";
}

}  // namespace zelkovanta::office
