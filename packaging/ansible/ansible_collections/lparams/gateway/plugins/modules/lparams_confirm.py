#!/usr/bin/python
# -*- coding: utf-8 -*-
"""Lets changes of a gateway stay that would go back."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type

DOCUMENTATION = r'''
---
module: lparams_confirm
short_description: Lets changes of a VPN gateway stay
description:
  - Confirms changes that were made with the option C(confirm) of another module of this collection.
  - Fails if none wait, perhaps because they have gone back by now; so let it depend on whether there were some.
version_added: 1.0.0
author:
  - The maintainers of lparams (@lparams)
extends_documentation_fragment:
  - lparams.gateway.client
attributes:
  check_mode:
    description: Confirms nothing, and does not fail.
    support: full
seealso:
  - module: lparams.gateway.lparams_settings
'''

EXAMPLES = r'''
- name: What we have changed stays, as we can still reach the gateway
  lparams.gateway.lparams_confirm:
  when: applied is changed
'''

RETURN = r'''
msg:
  description: What was done, or why it was not.
  returned: always
  type: str
  sample: confirmed
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lparams.gateway.plugins.module_utils.client import OPTIONS, Client


def main():
    module = AnsibleModule(argument_spec=dict(OPTIONS), supports_check_mode=True)
    if not module.check_mode:
        Client(module).ask('confirm', '--json')
    module.exit_json(changed=True, msg='confirmed')


if __name__ == '__main__':
    main()
