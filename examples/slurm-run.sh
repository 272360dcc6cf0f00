#!/bin/sh
#SBATCH --job-name=quorl-js
#SBATCH --cpus-per-task=4
# Records of many files by the tasks of a Slurm job array:
#
#   sbatch --array=0-9 slurm-run.sh 10 LIST SHARDS
#   quorl-js merge --files-from LIST SHARDS/*.ndjson >records.ndjson
#
# 10      how many tasks share the files; stays the same when some of them are run again
# LIST    the names of the files, one a line, as each machine sees them from this folder
# SHARDS  a folder for what the tasks answer
set -eu
tasks=$1
list=$2
shards=$3

mkdir -p "$shards"
shard=$shards/$SLURM_ARRAY_TASK_ID.ndjson
# Status 1 tells of files that could not be read, and the shard is whole all the same. A task that
# is ended half way leaves no shard.
LC_ALL=C awk -v tasks="$tasks" -v task="$SLURM_ARRAY_TASK_ID" 'NR % tasks == task' "$list" |
  quorl-js --format ndjson --jobs "${SLURM_CPUS_PER_TASK:-1}" --files-from - >"$shard.part" ||
  [ $? -eq 1 ]
mv "$shard.part" "$shard"
