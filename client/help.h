// The help texts of the command line, which are the client's manual.
#pragma once

namespace client {

inline constexpr const char* DESCRIPTION =
    "Shows and changes the settings of the VPN gateway agent, over the socket of its bridge.";

inline constexpr const char* NOTES =
    R"~(Parameters are called GROUP.NAME, for example IKE.IKE_PORT, or USERS[USER].NAME for those of a
user; where no user has the name USER, it is an index, counted from 0. The groups are IKE, LOG,
UPDATE, POLICY, ADMIN and USERS. "lparamsctl COMMAND --help" tells more about a command.

Changes take effect in the agent's memory at once; "lparamsctl save" writes them to its
settings file.

Examples:
  lparamsctl list '*TIMEOUT*'
  lparamsctl get IKE.IKE_PORT
  lparamsctl set LOG.LOG_LEVEL=_LL_DETAILS IKE.NATT_PORT=4500 && lparamsctl save)~";

inline constexpr const char* LIST_NOTES =
    R"~(Prints name, value, default, saved value and legal values. A glob is for the full name, for
the name without its group, or for the group, in any case: "*" stands for any text and "?" for
any character. Secrets are hidden. With --json the values are one document, with numbers as
numbers, flags as true and false, and null for a secret that you may not see.

Examples:
  lparamsctl list '*TIMEOUT*'
  lparamsctl list ike --changed
  lparamsctl list --unsaved
  lparamsctl list --json)~";

inline constexpr const char* SHOW_NOTES =
    R"~(Prints NAME=value lines, which "set -" takes back. A line that begins with "#" is a comment; it
also stands for a value with control characters, which "set" would not take.

Examples:
  lparamsctl show
  lparamsctl show USERS
  lparamsctl show --secrets IKE)~";

inline constexpr const char* GET_NOTES =
    R"~(Each value is printed in a line of its own as it is, a secret too.

Examples:
  lparamsctl get LOG.LOG_LEVEL
  lparamsctl get IKE.IKE_PORT IKE.NATT_PORT 'USERS[anna].PMP_TIMEOUT')~";

inline constexpr const char* DESCRIBE_NOTES =
    R"~(Prints what a parameter means, its value, saved value, default and legal values. If no agent
can be reached, it is what this program knows, without values. The fields of users are those
of USERS.

Examples:
  lparamsctl describe EXCHANGE_TIMEOUT
  lparamsctl describe USERS.PMP_AUTH
  lparamsctl describe LOG)~";

inline constexpr const char* SET_NOTES =
    R"~(Everything is checked before anything is written; then all is written, over all groups, or
nothing. What is so already is not written.

  numbers       decimal, within their limits
  flags         0, 1, false or true
  enumerations  one of their names; a wrong one makes the error list them all
  strings       one line without control characters

"-" reads assignments from the standard input, one a line, with comments and empty lines
left out: this keeps a secret out of the list of processes, and takes back what "show"
printed. A secret given as "(hidden)" stays as it is.

Examples:
  lparamsctl set IKE.IKE_PORT=500 IKE.PERSISTENT_SA=true
  lparamsctl set --save 'USERS[anna].PMP_TIMEOUT=20'
  lparamsctl set - < settings.txt)~";

inline constexpr const char* USER_LIST_NOTES = R"~(One name a line, in the order of the list.)~";

inline constexpr const char* USER_SHOW_NOTES =
    R"~(Examples:
  lparamsctl user show anna)~";

inline constexpr const char* USER_ADD_NOTES =
    R"~(Fields that are not given have their defaults. The name must not be taken.

Examples:
  lparamsctl user add anna
  lparamsctl user add anna PMP_AUTH=PMPAUTH_PSK PMP_PSK_NAME=office)~";

inline constexpr const char* USER_SET_NOTES =
    R"~(All of the fields are changed or none.

Examples:
  lparamsctl user set anna PMP_TIMEOUT=20 PMP_AUTH=PMPAUTH_PSK)~";

inline constexpr const char* USER_RENAME_NOTES =
    R"~(The new name must not be taken.

Examples:
  lparamsctl user rename anna berta)~";

inline constexpr const char* USER_DEL_NOTES =
    R"~(All of the users are removed or, if one is not there, none. A number is the index of an entry,
counted from 0, unless a user has it as the name.

Examples:
  lparamsctl user del anna
  lparamsctl user del 0)~";

inline constexpr const char* SAVE_NOTES =
    R"~(Prints "saved" when the file agrees with the settings and would survive a power cut, or
why it was not written. The agent refuses to save settings that it could not load whole, and
to write over a file that somebody has edited meanwhile; --force saves all the same. The
agent keeps a copy of what it replaces then.)~";

inline constexpr const char* STATUS_NOTES =
    R"~(Whether saves are refused (degraded) and why, whether there are unsaved changes (changed),
the last save and how it failed, the sessions on the bridge, and how many things in the
settings file were not taken as they stand there (findings). --findings lists these: lines
that were ignored or changed, with their places, until a save has replaced the file.)~";

inline constexpr const char* WATCH_NOTES =
    R"~(One line for each write of a group, with its revision and the process that wrote it, until
interrupted.)~";

}  // namespace client
