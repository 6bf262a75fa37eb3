#!/bin/bash
# demo.sh PROGRAM - what orli does with data/weather.csv. Each command is shown before it runs.
cd "$(dirname "$0")/.." || exit 1
program=$1
# Texts as they come, the same on every machine.
export LC_ALL=C

# A word as a person would write it: NAME='TEXT', in double quotes where it holds single ones.
quoted() {
  local name="" text=$1
  if [[ $1 =~ ^([a-z_]+=)(.*)$ ]]; then
    name=${BASH_REMATCH[1]} text=${BASH_REMATCH[2]}
  fi
  case $text in
    *\'*) text="\"$text\"" ;;
    *[!A-Za-z0-9_./-]*) text="'$text'" ;;
  esac
  printf %s "$name$text"
}

# The command as one would type it, a formula a line.
command_of() {
  local shown="" word
  for word in "$@"; do
    if [ "$word" = --formula ]; then shown+=$' \\\n   '; fi
    shown+=" $(quoted "$word")"
  done
  printf '$ orli%s' "$shown"
}

run() {
  echo "$(command_of "$@")"
  "$program" "$@" 2>&1
  echo
}

# Shows the last rows of a longer output.
run_tail() {
  echo "$(command_of "$@") | tail -n 3"
  { "$program" "$@" | tail -n 3; } 2>&1
  echo
}

run items data/weather.csv
run eval data/weather.csv --limit 5 \
  --formula "reported=date" \
  --formula "weekday=DateToStrPicture(date, 'dddd')" \
  --formula "mean=(temp_max + temp_min) / 2" \
  --formula "fahrenheit=mean() * 9 / 5 + 32" \
  --formula "next_report=date + 7 DAYS" \
  --formula "quarter=DateQuarter(date)" \
  --formula "label=weather || ' in ' || DateToStrPicture(date, 'MMMM yyyy')"
run_tail eval data/weather.csv \
  --formula "reported=date" \
  --formula "until_new_year=DateConstruct(DateYear(date) + 1, 1, 1, 0, 0, 0) - date" \
  --formula "wind_kmh=wind * 18 / 5" \
  --formula "month_end=DateMonthEnd(date)"
run check data/weather.csv "temp_max - temp_min"
run check data/weather.csv "date + 7 DAYS AND date + 8 DAYS"
run check data/weather.csv "DateYear(date) * 12 + DateMonth(weather)"
