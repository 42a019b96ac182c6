#!/usr/bin/python
# -*- coding: utf-8 -*-
"""Makes the settings of a gateway what a document says."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type

DOCUMENTATION = r'''
---
module: lparams_settings
short_description: Settings of a VPN gateway
description:
  - Makes the settings of a gateway what a document, or a list of parameters, says.
  - Everything is checked before anything is written; all is written or nothing. What is so already is not
    written.
  - All mistakes are told at once.
version_added: 1.0.0
author:
  - The maintainers of lparams (@lparams)
options:
  document:
    description:
      - What the settings shall be. A dictionary of groups, or a text in any form that C(lparamsctl apply) takes.
      - Null stands for what stays as it is, and so does the text C((hidden)) for a secret.
      - Never shown, as it may hold secrets.
    type: raw
  src:
    description: A file with such a text, on the gateway.
    type: path
  settings:
    description:
      - Parameters by their full names, such as C(IKE.IKE_PORT) and C(USERS[bob].PMP_TIMEOUT), and their values.
      - Never shown, as they may hold secrets.
    type: dict
  exclusive:
    description: What is not named goes to its default, secrets too, and users who are not named are removed.
    type: bool
    default: false
extends_documentation_fragment:
  - lparams.gateway.client
  - lparams.gateway.client.changes
seealso:
  - module: lparams.gateway.lparams_users
  - module: lparams.gateway.lparams_confirm
'''

EXAMPLES = r'''
- name: A parameter, and a secret from the vault
  lparams.gateway.lparams_settings:
    settings:
      IKE.EXCHANGE_TIMEOUT: 90
      IKE.QCD_SECRET: "{{ vault_qcd_secret }}"
    save_message: longer exchanges

- name: Everything, as a file of the controller says; what it does not name is at its default
  lparams.gateway.lparams_settings:
    document: "{{ lookup('ansible.builtin.file', 'gateway.json') }}"
    exclusive: true

- name: A port that may cut us off goes back after two minutes
  lparams.gateway.lparams_settings:
    document:
      IKE:
        IKE_PORT: 501
    confirm: 120
  register: port

- name: We are not cut off
  lparams.gateway.lparams_confirm:
  when: port is changed
'''

RETURN = r'''
changes:
  description: The parameters that are changed, or would be in check mode.
  returned: success
  type: list
  elements: dict
  contains:
    name:
      description: The name of the parameter, with its group, or with C(USERS) and its user.
      type: str
      returned: always
    before:
      description: The value before. Null for a secret, and for a user who was not there.
      type: raw
      returned: always
    after:
      description: The new value. Null for a secret.
      type: raw
      returned: always
    secret:
      description: True for a secret.
      type: bool
      returned: if it is one
  sample:
    - name: IKE.EXCHANGE_TIMEOUT
      before: 60
      after: 90
added:
  description: Users that are added.
  returned: success
  type: list
  elements: str
removed:
  description: Users that are removed.
  returned: success
  type: list
  elements: str
saved:
  description: Whether the settings are saved now.
  returned: success
  type: bool
msg:
  description: What was done, in words. After a failure, every mistake, one a line.
  returned: always
  type: str
  sample: 2 changes made and saved
rc:
  description: The exit status of the client, which tells the kind of the failure.
  returned: failure
  type: int
  sample: 65
'''

import json

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lparams.gateway.plugins.module_utils.client import CHANGE_OPTIONS, Client, take


def nested(settings):
    """The parameters as a document. A user's own name may hold any character."""
    document = {}
    for name, value in settings.items():
        owner, dot, member = name.rpartition('.')
        path = [owner, member] if dot else [name]
        if owner.startswith('USERS[') and owner.endswith(']'):
            path = ['USERS', owner[len('USERS['):-1], member]
        place = document
        for key in path[:-1]:
            place = place.setdefault(key, {})
        place[path[-1]] = value
    return document


def main():
    module = AnsibleModule(
        argument_spec=dict(
            CHANGE_OPTIONS,
            document=dict(type='raw', no_log=True),
            src=dict(type='path'),
            settings=dict(type='dict', no_log=True),
            exclusive=dict(type='bool', default=False),
        ),
        mutually_exclusive=[('document', 'src', 'settings')],
        required_one_of=[('document', 'src', 'settings')],
        supports_check_mode=True,
    )
    document = take(module, 'document')
    settings = take(module, 'settings')
    words = ['--exclusive'] if module.params['exclusive'] else []
    client = Client(module)
    if module.params['src'] is not None:
        client.apply(None, words + ['--', module.params['src']], places=True)
    if settings is not None:
        document = nested(settings)
    if isinstance(document, dict):
        client.apply(json.dumps(document), words + ['-'])
    client.apply(str(document), words + ['-'], places=True)


if __name__ == '__main__':
    main()
