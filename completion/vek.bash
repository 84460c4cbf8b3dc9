# Completion of vek's words. A line: words, "|", and what stands behind them: "@" an interface, "-" something
# that only the user knows, "a/b" one of these.
_vek_words='@WORDS@'

_vek_interfaces() {
  local names
  names=$("$1" devmg list 2>/dev/null | awk 'NR > 2 && NF > 1 { print $1 }')
  # What else a name may hold would mean something to the shell.
  { [[ -n $names ]] && echo "$names" || ls /sys/class/net; } | grep -x '[[:alnum:]_.@-]*'
}

_vek() {
  local rest=${COMP_LINE:0:COMP_POINT} typed known behind
  local -a words=() path=() wanted=() choices=()
  # The shell's own words end at each colon. What stands behind the last blank is still being typed.
  while [[ $rest =~ ^[[:blank:]]*(([^[:blank:]\'\"\\]|\\.|\'[^\']*\'|\"([^\"\\]|\\.)*\")+)[[:blank:]]+ ]]; do
    words+=("${BASH_REMATCH[1]//[\'\"\\]/}")
    rest=${rest:${#BASH_REMATCH[0]}}
  done
  typed="${words[*]:1}"
  while IFS='|' read -r known behind; do
    if [[ -z $typed || $known == "$typed "* ]]; then
      known=${known#"$typed"}
      known=${known# }
      choices+=("${known%% *}")
    elif [[ "$typed " == "$known "* ]]; then
      read -ra path <<<"$known"
      read -ra wanted <<<"$behind"
      known=${wanted[${#words[@]} - ${#path[@]} - 1]-}
      case $known in
        '' | -) ;;
        @) choices+=($(_vek_interfaces "$1")) ;;
        *) choices+=(${known//\// }) ;;
      esac
    fi
  done <<<"$_vek_words"
  COMPREPLY=()
  for known in "${choices[@]}"; do
    [[ $known == "$rest"* ]] && COMPREPLY+=("$known")
  done
}
complete -F _vek vek
