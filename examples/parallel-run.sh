#!/bin/sh
# Parses many files on several machines, over ssh:
#
#   parallel-run.sh HOSTS LIST SHARDS >records.ndjson
#
# HOSTS   file with one machine per line, in the format of GNU parallel's --sshloginfile
# LIST    file with one path per line, valid on each machine relative to this folder
# SHARDS  folder for the jobs' output and for the log that a later call resumes from
set -eu
hosts=$1
list=$2
shards=$3

mkdir -p "$shards"
# If SHELL is unset, as under some job schedulers, parallel loses the jobs' output.
export SHELL="${SHELL:-/bin/sh}"
# One job per machine at a time, since quorl-js uses all of its cores. The next call retries jobs
# that failed or lost their machine; merge reports whether files are missing.
parallel --sshloginfile "$hosts" --workdir "$PWD" --jobs 1 \
  --pipe --no-run-if-empty -N "${FILES_PER_JOB:-1000}" \
  --joblog "$shards/log" --resume-failed --results "$shards/{#}.ndjson" \
  quorl-js --format ndjson --files-from - <"$list" >/dev/null || true
quorl-js merge --files-from "$list" "$shards"/*.ndjson
