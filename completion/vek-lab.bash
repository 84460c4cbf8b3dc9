# Completion of vek-lab's words, which its usage tells.
_vek_lab() {
  local current=${COMP_WORDS[COMP_CWORD]}
  case $COMP_CWORD,${COMP_WORDS[1]} in
    1,*) COMPREPLY=($(compgen -W "$(vek-lab 2>&1 | awk '{ print $2 }')" -- "$current")) ;;
    2,load | 2,members) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    2,enter) COMPREPLY=($(compgen -W --routing -- "$current")) ;;
  esac
}
complete -o filenames -F _vek_lab vek-lab
