function grade(score, limits) {
  let label = "none";
  if (score > limits.high) {
    label = "high";
  } else if (score > limits.low) {
    label = "mid";
  } else {
    label = "low";
  }
  for (let i = 0; i < limits.rounds; i++) {
    while (score > 100) {
      score -= 10;
    }
  }
  try {
    publish(label);
  } catch (err) {
    report(err);
  } finally {
    done();
  }
  switch (label) {
    case "high":
      return 1;
    default:
      break;
  }
  do {
    score++;
  } while (score < 0);
  return score;
}
var after = grade(1, {});
