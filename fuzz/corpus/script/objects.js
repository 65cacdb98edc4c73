var made = new Lamp(9), other = new Lamp();
made.level = '7'; made.steps = [1, 2.5, 'x']; made.labels = ['a', 5]; made.name = {};
other.IsSame(made); other.IsSame(null); [made.next, host.next, host.GetNext()].join();
host.Brighten(made.MAX) + host.Join('a', made.labels) + host.Again(made.steps);
