#!/bin/sh
# Parse many files on several machines, over ssh:
#
#   parallel-run.sh HOSTS LIST SHARDS >records.ndjson
#
# HOSTS   file of machines, one per line, as for GNU parallel's --sshloginfile
# LIST    file of names, one per line, as each machine sees them from this folder
# SHARDS  folder for the output of the jobs, and for the log that a second call resumes from
set -eu
hosts=$1
list=$2
shards=$3

mkdir -p "$shards"
# Some job schedulers do not set SHELL, and without it parallel loses the output of the jobs.
export SHELL="${SHELL:-/bin/sh}"
# One job per machine at a time: quorl-js uses all of its cores. The next call runs a job again if
# it failed or lost its machine; merge fails if that is needed.
parallel --sshloginfile "$hosts" --workdir "$PWD" --jobs 1 \
  --pipe --no-run-if-empty -N "${FILES_PER_JOB:-1000}" \
  --joblog "$shards/log" --resume-failed --results "$shards/{#}.ndjson" \
  quorl-js --format ndjson --files-from - <"$list" >/dev/null || true
quorl-js merge --files-from "$list" "$shards"/*.ndjson
