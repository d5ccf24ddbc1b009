#!/usr/bin/env bash
# Oracle's published HR sample scripts, run unchanged through dbsweep-sql on a fresh embedded
# instance: they must install without an error and answer as Oracle's documentation shows.
# The scripts are not part of this project; DBSWEEP_HR_SAMPLES names the folder holding
# hr_create.sql and hr_populate.sql. Without it the test is skipped (exit 77).
set -euo pipefail
sql=$1
samples=${DBSWEEP_HR_SAMPLES:-}
if [ -z "$samples" ] || [ ! -f "$samples/hr_create.sql" ]; then
  echo "DBSWEEP_HR_SAMPLES does not name a folder with the HR scripts: skipped"
  exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
instance=local:$scratch/instance
printf 'secret\nsecret\n' | "$sql" --create-instance "$instance" > "$scratch/create.log" 2>&1
printf "create user hr identified by hr;\ngrant connect, resource to hr;\n" |
  "$sql" "system/secret@$instance" > "$scratch/user.log" 2>&1
for script in hr_create hr_populate; do
  if ! "$sql" "hr/hr@$instance" "@$samples/$script.sql" < /dev/null > "$scratch/$script.log" 2>&1 ||
    grep -E "ORA-|SP2-" "$scratch/$script.log"; then
    echo "$script.sql did not run cleanly:"
    tail -20 "$scratch/$script.log"
    exit 1
  fi
done

check() { # query expected
  local got
  got=$(printf '%s\n' "$1" | "$sql" --csv "hr/hr@$instance" 2>&1 | tail -n +2)
  if [ "$got" != "$2" ]; then
    printf 'query: %s\nexpected:\n%s\ngot:\n%s\n' "$1" "$2" "$got"
    exit 1
  fi
}
check "select count(*) from employees;" "107"
check "select count(*) from departments;" "27"
check "select count(*) from locations where country_id = 'US';" "4"
# The management chain under King, as a tree: 107 rows over 4 levels.
check "select count(*), max(level) from employees start with manager_id is null connect by prior employee_id = manager_id;" "107,4"
# The IT department is run by employee 103, Alexander James in this edition of the scripts.
check "select last_name from employees where employee_id = (select manager_id from departments where department_name = 'IT');" James
echo "HR scripts installed and answered"
