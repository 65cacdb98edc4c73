-- Brings a database of an older version up to date: run what is behind its version.
<%repeat count="[%version%] - 1"%>
<%keep DEFINE="from=[%++%] + 1; to=[%++%] + 2"%>
-- From version [%#from%] to version [%#to%]
<%repeat filter="table"%>
<%if cond="[%since|1%] == [%#to%]"%>
CREATE TABLE [%name%] (
<%repeat filter="column"%>
    [%name%] [%type%][%(HasProp('key') ? ' PRIMARY KEY' : '')%][%(HasProp('required') ? ' NOT NULL' : '')%][%(GetNextByName('column').Ok() ? ',' : '')%]
<%/repeat%>
<%keep%>
);
<%/keep%>
<%/if%>
<%else%>
<%keep DEFINE="table='[%name%]'"%>
<%repeat filter="column"%>
<%if cond="[%since|1%] == [%#to%]"%>
ALTER TABLE [%#table%] ADD COLUMN [%name%] [%type%];
<%/if%>
<%/repeat%>
<%/keep%>
<%/else%>
<%/repeat%>
<%/keep%>
<%/repeat%>
