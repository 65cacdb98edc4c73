<%keep%>
-- The database [%"name"%], version [%version%].
<%/keep%>
<%repeat filter="table"%>
<%keep%>
CREATE TABLE [%name%] (
<%repeat filter="column"%>
    [%name%] [%type%][%(HasProp('key') ? ' PRIMARY KEY' : '')%][%(HasProp('required') ? ' NOT NULL' : '')%][%(HasProp('references') ? ' REFERENCES ' + GetProp('references') + '(id)' : '')%][%(GetNextByName('column').Ok() ? ',' : '')%]
<%/repeat%>
<%keep%>
);
<%/keep%>
<%/keep%>
<%/repeat%>
