#!/bin/sh
#SBATCH --job-name=quorl-js
#SBATCH --cpus-per-task=4
# One task of a job array, which slurm-submit.sh starts:
#
#   sbatch --array=0-9 slurm-run.sh 10 LIST SHARDS
#
# 10      number of tasks that share the files; the same when you run some of them again
# LIST    file of names, one per line, as each machine sees them from this folder
# SHARDS  folder for the output of the tasks
set -eu
tasks=$1
list=$2
shards=$3

mkdir -p "$shards"
shard=$shards/$SLURM_ARRAY_TASK_ID.ndjson
# Exit status 1 means that some files could not be read; the shard is complete even so. A task that
# is stopped half way leaves no shard.
LC_ALL=C awk -v tasks="$tasks" -v task="$SLURM_ARRAY_TASK_ID" 'NR % tasks == task' "$list" |
  quorl-js --format ndjson --ranges --jobs "${SLURM_CPUS_PER_TASK:-1}" --files-from - \
    >"$shard.part" ||
  [ $? -eq 1 ]
mv "$shard.part" "$shard"
