#!/usr/bin/python
# -*- coding: utf-8 -*-
"""Makes the users of a gateway what they shall be."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type

DOCUMENTATION = r'''
---
module: lparams_users
short_description: Users of a VPN gateway
description:
  - Adds, changes and removes users of a gateway, by their names.
  - Everything is checked before anything is written; all is written or nothing. What is so already is not
    written.
  - All mistakes are told at once.
version_added: 1.0.0
author:
  - The maintainers of lparams (@lparams)
options:
  users:
    description:
      - The users by their names, each with its fields; a field that is left out stays as it is, and has its
        default where the user is new.
      - With I(state=absent) the names count alone.
      - Never shown, as they may hold secrets.
    type: dict
    required: true
  state:
    description: Whether the users shall be there.
    type: str
    choices: [present, absent]
    default: present
  purge:
    description: Whether all other users are removed.
    type: bool
    default: false
extends_documentation_fragment:
  - lparams.gateway.client
  - lparams.gateway.client.changes
seealso:
  - module: lparams.gateway.lparams_settings
'''

EXAMPLES = r'''
- name: These users, and no others
  lparams.gateway.lparams_users:
    users:
      anna:
        PMP_AUTH: PMPAUTH_PSK
        PMP_PSK_NAME: office
      bert: {}
    purge: true

- name: Not this one
  lparams.gateway.lparams_users:
    users:
      carl:
    state: absent
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


def main():
    module = AnsibleModule(
        argument_spec=dict(
            CHANGE_OPTIONS,
            users=dict(type='dict', required=True, no_log=True),
            state=dict(type='str', choices=['present', 'absent'], default='present'),
            purge=dict(type='bool', default=False),
        ),
        supports_check_mode=True,
    )
    users = take(module, 'users')
    words = []
    if module.params['state'] == 'absent':
        if module.params['purge']:
            module.fail_json(msg='purge is for the users that shall be present')
        words = ['--remove-user=%s' % name for name in users]
        users = {}
    elif module.params['purge']:
        words = ['--only-users']
    document = {'USERS': dict((name, {} if fields is None else fields) for name, fields in users.items())}
    Client(module).apply(json.dumps(document), words + ['-'])


if __name__ == '__main__':
    main()
