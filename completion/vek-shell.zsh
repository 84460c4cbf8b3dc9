#compdef vek-shell
_arguments '-e[stop at the first command that fails]' '-j[answer with JSON]' '--trace=-[show orders]::file:_files' \
  '--record[add orders to a file]:file:_files' '--replay[answer orders from a file]:file:_files' \
  '--dump[show a recording]:file:_files' '--help' '--version' '*:file:_files'
