#!/usr/bin/python
# -*- coding: utf-8 -*-
"""Tells the settings and the state of a gateway."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type

DOCUMENTATION = r'''
---
module: lparams_facts
short_description: Settings and state of a VPN gateway
description:
  - Returns the settings of a gateway, their hashes, what is not saved, and the state of the agent, as facts.
  - Secrets are null. The hashes do not depend on them.
version_added: 1.0.0
author:
  - The maintainers of lparams (@lparams)
extends_documentation_fragment:
  - lparams.gateway.client
attributes:
  check_mode:
    description: Changes nothing.
    support: full
'''

EXAMPLES = r'''
- name: Ask the gateway
  lparams.gateway.lparams_facts:

- name: The settings are those of the fleet, and saved
  ansible.builtin.assert:
    that:
      - ansible_facts.lparams.degraded is none
      - not ansible_facts.lparams.unsaved
      - ansible_facts.lparams.saved_hash == fleet_hash
'''

RETURN = r'''
ansible_facts:
  description: The gateway.
  returned: success
  type: dict
  contains:
    lparams:
      description: The settings and the state.
      type: dict
      returned: success
      contains:
        values:
          description: All settings, as a document of M(lparams.gateway.lparams_settings); secrets are null.
          type: dict
          returned: success
          sample:
            IKE:
              IKE_PORT: 500
              QCD_SECRET: null
        saved_hash:
          description: A hash of the saved settings, equal on all gateways with equal settings. Null if none are saved.
          type: str
          returned: success
        running_hash:
          description: The same of the running settings.
          type: str
          returned: success
        catalogue:
          description: The hash of the agent's catalogue, equal where the same parameters have the same limits.
          type: str
          returned: success
        version:
          description: The version of the agent.
          type: str
          returned: success
        unsaved:
          description: Names of the parameters and users that are not as they were saved.
          type: list
          elements: str
          returned: success
        degraded:
          description: Why saves are refused. Null if they are not.
          type: str
          returned: success
        findings:
          description: How many things in the settings file were not taken as they stand there.
          type: int
          returned: success
        pending_confirmation:
          description: When changes go back that are not confirmed, in UTC. Null if none wait.
          type: str
          returned: success
        history:
          description: The number of the newest revision of the saved settings.
          type: int
          returned: success
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lparams.gateway.plugins.module_utils.client import OPTIONS, Client

# Those with secrets are left out: a short secret could be guessed from its hash.
STATE = dict(
    saved_hash='savedHash',
    running_hash='runningHash',
    catalogue='catalogue',
    version='version',
    degraded='degraded',
    findings='findings',
    pending_confirmation='pendingConfirmation',
    history='history',
)


def main():
    module = AnsibleModule(argument_spec=dict(OPTIONS), supports_check_mode=True)
    client = Client(module)
    state = client.ask('status', '--json')
    report = client.ask('diff', '--json')
    facts = dict((name, state.get(member)) for name, member in STATE.items())
    facts['values'] = client.ask('show', '--json')
    facts['unsaved'] = ['USERS[%s]' % user for user in report['removed'] + report['added'] + report['moved']]
    facts['unsaved'] += [change['name'] for change in report['changes']]
    module.exit_json(changed=False, ansible_facts=dict(lparams=facts))


if __name__ == '__main__':
    main()
