#!/usr/bin/env bash
# Every shell script is clean.
set -euo pipefail
cd "$(dirname "$0")/../.."

git ls-files -z --cached --others --exclude-standard -- dev .ci/run '*.sh' | xargs -0 shellcheck
