#!/bin/sh
# Parse many files by the tasks of a Slurm job array, then join what they wrote and index it:
#
#   slurm-submit.sh TASKS LIST SHARDS RECORDS INDEX
#
# TASKS    number of tasks that share the files
# LIST     file of names, one per line, as each machine sees them from this folder
# SHARDS   folder for the output of the tasks, and for what they say
# RECORDS  the joined output
# INDEX    the index of it, for quorl-js query
set -eu
tasks=$1
list=$2
shards=$3
records=$4
index=$5

here=$(dirname "$0")
mkdir -p "$shards"
array=$(sbatch --parsable --array="0-$((tasks - 1))" --output="$shards/%a.log" \
  "$here/slurm-run.sh" "$tasks" "$list" "$shards")
# Whatever came of the tasks: merge says what is missing.
sbatch --dependency="afterany:$array" --output="$shards/merge.log" \
  "$here/slurm-merge.sh" "$list" "$shards" "$records" "$index"
