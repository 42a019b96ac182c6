# -*- coding: utf-8 -*-
"""What the modules have in common: they hand a document to lparamsctl(1), and return what it says."""

from __future__ import (absolute_import, division, print_function)
__metaclass__ = type

import json
import re

OPTIONS = dict(
    socket=dict(type='path'),
    executable=dict(type='str', default='lparamsctl'),
    timeout=dict(type='int'),
)
CHANGE_OPTIONS = dict(
    OPTIONS,
    save=dict(type='bool', default=True),
    save_message=dict(type='str'),
    confirm=dict(type='int'),
)

HIDDEN = '(hidden)'
# A document that was made of an option has no places that anybody could look at.
PLACE = re.compile(r'^the standard input:(\d+:\d+:)? ')


def take(module, name):
    """The value of an option that may hold secrets. No result shows the option from here on. So its
    values, which were all masked wherever they occur, can be told: which of them are secret, the
    client knows by their type."""
    value = module.params[name]
    if value is not None:
        module.params[name] = HIDDEN
    module.no_log_values = set()
    return value


class Client(object):
    def __init__(self, module):
        self.module = module
        self.command = [module.get_bin_path(module.params['executable'], required=True)]
        for option in ('socket', 'timeout'):
            if module.params[option] is not None:
                self.command.append('--%s=%s' % (option, module.params[option]))

    def ask(self, *words):
        """The document that the client prints, whether it tells of differences or not."""
        return self._run(words, None, (0, 1))

    def apply(self, document, words, places=False):
        """Ends the module with what the client has done, or would do. The document never is among the
        arguments of a process. `places`: those of mistakes in it are told."""
        words = ['apply', '--json'] + words
        params = self.module.params
        if self.module.check_mode:
            words.append('--check')
        if params['save']:
            words.append('--save')
        if params['save_message'] is not None:
            words.append('--message=%s' % params['save_message'])
        if params['confirm'] is not None:
            words.append('--confirm=%s' % params['confirm'])
        report = self._run(words, document, (0,), places)
        saves = params['save'] and report['unsaved']
        result = dict(
            changed=report['changed'] or saves,
            changes=report['changes'],
            added=report['added'],
            removed=report['removed'],
            saved=report['saved'],
            msg=report['message'],
        )
        if self.module._diff:
            result['diff'] = difference(report, saves)
        self.module.exit_json(**result)

    def _run(self, words, document, good, places=True):
        status, out, err = self.module.run_command(self.command + list(words), data=document)
        if status not in good:
            lines = [line[len('lparamsctl: '):] if line.startswith('lparamsctl: ') else line
                     for line in err.splitlines()]
            if not places:
                lines = [PLACE.sub('', line) for line in lines]
            # What was changed before a save failed.
            changed = out.startswith('{') and json.loads(out).get('changed', False)
            self.module.fail_json(msg='\n'.join(lines), rc=status, changed=changed)
        return json.loads(out)


def difference(report, saves):
    """For --diff. A secret is hidden; that it is another one is told."""
    before = ['USERS[%s]' % user for user in report['removed']]
    after = ['USERS[%s]' % user for user in report['added']]
    for change in report['changes']:
        if change.get('secret'):
            before.append('%s=%s' % (change['name'], HIDDEN))
            after.append('%s=%s, another one' % (change['name'], HIDDEN))
            continue
        for lines, value in ((before, change['before']), (after, change['after'])):
            if value is not None:
                text = value if isinstance(value, type(u'')) else json.dumps(value)
                lines.append('%s=%s' % (change['name'], text))
    if saves and not report['changed']:
        before.append('(changes of somebody else, not saved)')
        after.append('(changes of somebody else, saved)')
    return dict(before=''.join(line + '\n' for line in before),
                after=''.join(line + '\n' for line in after))
