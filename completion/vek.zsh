#compdef vek
# Completion of vek's words. A line: words, "|", and what stands behind them: "@" an interface, "-" something
# that only the user knows, "a/b" one of these.
local vek_words='@WORDS@'
local typed="${(j: :)${(Q)words[2,CURRENT-1]}}" known behind wanted
local -a path_words behind_words choices names
while IFS='|' read -r known behind; do
  path_words=(${=known})
  behind_words=(${=behind})
  if [[ -z $typed || $known == "$typed "* ]]; then
    choices+=($path_words[CURRENT-1])
  elif [[ "$typed " == "$known "* ]]; then
    wanted=$behind_words[CURRENT-1-$#path_words]
    case $wanted in
      '' | -) ;;
      @)
        names=(${(f)"$($words[1] devmg list 2>/dev/null | awk 'NR > 2 && NF > 1 { print $1 }')"})
        choices+=(${names:-/sys/class/net/*(:t)})
        ;;
      *) choices+=(${(s:/:)wanted}) ;;
    esac
  fi
done <<<$vek_words
compadd -- ${(u)choices}
