#compdef vek
# Completion of vek's words. A line: words, "|", and what stands behind them: "@" an interface, "-" something
# that only the user knows, "a/b" one of these.
local vek_words='@WORDS@'
local typed="${(j: :)words[2,CURRENT-1]}" known behind wanted
local -a choices names
while IFS='|' read -r known behind; do
  if [[ -z $typed || $known == "$typed "* ]]; then
    choices+=(${${=known#$typed}[1]})
  elif [[ "$typed " == "$known "* ]]; then
    wanted=${${=behind}[${#${=typed#$known}}+1]}
    case $wanted in
      '' | -) ;;
      @)
        names=(${(f)"$(vek devmg list 2>/dev/null | awk 'NR > 2 && NF > 1 { print $1 }')"})
        choices+=(${names:-/sys/class/net/*(:t)})
        ;;
      *) choices+=(${(s:/:)wanted}) ;;
    esac
  fi
done <<<$vek_words
compadd -- ${(u)choices}
