# -*- coding: utf-8 -*-
"""What the options mean that several modules have."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type


class ModuleDocFragment(object):
    DOCUMENTATION = r'''
options:
  socket:
    description:
      - The socket of the agent on the gateway.
      - The client's own default if it is left out.
    type: path
  executable:
    description: The client on the gateway, as a path or a name in its C(PATH).
    type: str
    default: lparamsctl
  timeout:
    description:
      - How many seconds to wait for the agent.
      - The client's own default if it is left out.
    type: int
requirements:
  - lparamsctl on the gateway
notes:
  - The gateway's user has to be root, the agent's own user, or a member of the administrators' group, to change
    something.
'''

    CHANGES = r'''
options:
  save:
    description: Whether the settings are saved. Changes that somebody else has not saved are saved with them.
    type: bool
    default: true
  save_message:
    description: Why, for the history of what was saved. Only with I(save).
    type: str
  confirm:
    description:
      - The changes go back after so many seconds unless M(lparams.gateway.lparams_confirm) comes before.
      - For what may cut the gateway off.
    type: int
attributes:
  check_mode:
    description: Tells what would change, and changes nothing.
    support: full
  diff_mode:
    description: Shows the parameters before and after. Secrets are hidden.
    support: full
'''
