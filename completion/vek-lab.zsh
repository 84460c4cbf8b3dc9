#compdef vek-lab
case $CURRENT,$words[2] in
  2,*) compadd -- $(vek-lab 2>&1 | awk '{ print $2 }') ;;
  3,load | 3,members) _files ;;
  3,enter) compadd -- --routing; _command_names -e ;;
esac
