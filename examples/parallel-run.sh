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
# One job per machine at a time: quorl-js uses all of its cores. A job that loses its machine is run
# again on another one. Exit status 1 means that some files could not be read; the shard is complete
# even so. The next call runs the jobs that failed; merge fails if that is needed.
parallel --sshloginfile "$hosts" --workdir "$PWD" --jobs 1 \
  --pipe --no-run-if-empty -N "${FILES_PER_JOB:-1000}" --retries 3 \
  --joblog "$shards/log" --resume-failed --results "$shards/{#}.ndjson" \
  "sh -c 'quorl-js --format ndjson --ranges --files-from - || [ \$? -eq 1 ]'" \
  <"$list" >/dev/null || true
quorl-js merge --files-from "$list" "$shards"/*.ndjson
