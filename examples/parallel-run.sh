#!/bin/sh
# Records of many files by several machines, over ssh:
#
#   parallel-run.sh HOSTS LIST SHARDS >records.ndjson
#
# HOSTS   the machines, one a line, as GNU parallel's --sshloginfile takes them
# LIST    the names of the files, one a line, as each machine sees them from this folder
# SHARDS  a folder for what the jobs answer, and for the log that a further call goes on from
set -eu
hosts=$1
list=$2
shards=$3

mkdir -p "$shards"
# Without SHELL, as some job schedulers start it, parallel would lose what the jobs answer.
export SHELL="${SHELL:-/bin/sh}"
# One job a machine at a time, for quorl-js itself takes all its cores. A job that fails, or whose
# machine goes away, is run again by the next call; merge tells if there has to be one.
parallel --sshloginfile "$hosts" --workdir "$PWD" --jobs 1 \
  --pipe --no-run-if-empty -N "${FILES_PER_JOB:-1000}" \
  --joblog "$shards/log" --resume-failed --results "$shards/{#}.ndjson" \
  quorl-js --format ndjson --files-from - <"$list" >/dev/null || true
quorl-js merge --files-from "$list" "$shards"/*.ndjson
