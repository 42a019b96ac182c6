"""The examples of the client's document: commands behind "$ " in blocks of consoles, and what they
print, in which "..." stands for anything."""

import re


def examples(document):
    """Each command, with what the document says it prints."""
    for block in re.findall(r"^```console\n(.*?)^```", document, re.MULTILINE | re.DOTALL):
        for example in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = example.partition("\n")
            yield command, output


def script(command, directory):
    """For a shell, which tells of an exit status other than 0 as the document does."""
    return (f"cd {directory}; {{ {command}\n}} 2>&1 </dev/null; status=$?; "
            '[ $status -eq 0 ] || echo "[$status]"')


def matches(expected, output):
    return re.fullmatch(".*".join(map(re.escape, expected.split("..."))), output,
                        re.DOTALL) is not None
