{{repeat}}
<%keep%> [%name%]
{{/repeat}}
